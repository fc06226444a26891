-- Files as of a commit.
local M = {}

local messages = require("nebgit.messages")
local requests = require("nebgit.requests")
local scratch = require("nebgit.scratch")
local text = require("nebgit.text")

-- Shows the file of the commit in the window that is current now, unless it is closed meanwhile,
-- then calls callback(window).
function M.open(root, path, commit, callback)
  local window = vim.api.nvim_get_current_win()
  requests.perform("content", root, { files = { path }, from = commit }, function(failure, records)
    if failure then
      return messages.failure(failure)
    elseif not vim.api.nvim_win_is_valid(window) then
      return
    end
    local buffer = scratch.buffer(("nebgit://%s//%s/%s"):format(root, commit:sub(1, 12), path))
    local lines = text.split((records[1].Content or ""))
    scratch.set_lines(buffer, 0, -1, lines)
    vim.b[buffer].nebgit_root, vim.b[buffer].nebgit_path = root, path
    vim.b[buffer].nebgit_revision = commit
    vim.api.nvim_win_set_buf(window, buffer)
    vim.api.nvim_buf_call(buffer, function()
      vim.cmd("silent! doautocmd filetypedetect BufRead " .. vim.fn.fnameescape(path))
    end)
    scratch.map(buffer, {})
    if callback then
      callback(window)
    end
  end)
end

return M
