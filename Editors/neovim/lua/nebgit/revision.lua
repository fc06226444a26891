-- Files as of a commit.
local M = {}

local messages = require("nebgit.messages")
local requests = require("nebgit.requests")
local scratch = require("nebgit.scratch")
local text = require("nebgit.text")

-- Shows the file of the commit in the window, then calls callback(buffer).
function M.open(root, path, commit, callback)
  requests.perform("content", root, { files = { path }, from = commit }, function(failure, records)
    if failure then
      return messages.failure(failure)
    end
    local buffer = scratch.buffer(("nebgit://%s//%s/%s"):format(root, commit:sub(1, 12), path))
    local lines = text.split((records[1].Content or ""))
    scratch.set_lines(buffer, 0, -1, lines)
    vim.b[buffer].nebgit_root, vim.b[buffer].nebgit_path = root, path
    vim.b[buffer].nebgit_revision = commit
    vim.api.nvim_win_set_buf(0, buffer)
    vim.cmd("silent! doautocmd filetypedetect BufRead " .. vim.fn.fnameescape(path))
    scratch.map(buffer, {})
    if callback then
      callback(buffer)
    end
  end)
end

return M
