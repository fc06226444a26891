-- A buffer for the message of a commit. Writing it commits.
local M = {}

local actions = require("nebgit.actions")
local messages = require("nebgit.messages")
local requests = require("nebgit.requests")
local scratch = require("nebgit.scratch")

-- As of git-commit(1), --cleanup=scissors: what follows is not part of the message.
local scissors = "# ------------------------ >8 ------------------------"

-- Messages of new commits that were abandoned, by working copy; offered again.
local drafts = {}

-- Returns the message in the buffer.
local function message_in(buffer)
  local lines = {}
  for _, line in ipairs(vim.api.nvim_buf_get_lines(buffer, 0, -1, true)) do
    if line == scissors then
      break
    end
    lines[#lines + 1] = line
  end
  return vim.trim(table.concat(lines, "\n"))
end

local function help_lines(settings)
  return {
    scissors,
    settings.amend and "# The last commit gets this message and what is staged."
      or "# Everything above is the message; an empty one is that of the merge or pick under way.",
    "# :wq commits, :q! does not.",
  }
end

-- Shows the buffer again, with the message that was written.
local function show_again(buffer)
  if vim.api.nvim_buf_is_valid(buffer) then
    scratch.show(buffer)
    vim.bo[buffer].modified = true
  end
end

local function commit(buffer, root, settings)
  local message = message_in(buffer)
  local options = { Amend = settings.amend, Message = message ~= "" and message or nil }
  vim.bo[buffer].modified = false
  actions.perform("commit", root, { options = options }, function(records)
    local id = records[1] and records[1].ObjectID or ""
    messages.info(("committed %s"):format(id:sub(1, 12)))
    if vim.api.nvim_buf_is_valid(buffer) then
      vim.cmd("bwipeout! " .. buffer)
    end
  end, function(failure)
    messages.failure(failure)
    show_again(buffer)
  end)
end

local function create(buffer, root, settings, message)
  vim.bo[buffer].buftype = "acwrite"
  vim.bo[buffer].bufhidden = "hide"
  vim.bo[buffer].modifiable = true
  vim.bo[buffer].undolevels = vim.o.undolevels
  local lines = vim.split(message, "\n", { plain = true })
  if message == "" then
    lines[2] = ""
  end
  vim.api.nvim_buf_set_lines(buffer, 0, -1, true, vim.list_extend(lines, help_lines(settings)))
  vim.bo[buffer].filetype = "gitcommit"
  vim.bo[buffer].modified = false
  vim.b[buffer].nebgit_root = root
  vim.api.nvim_create_autocmd("BufWriteCmd", { buffer = buffer, callback = function()
    commit(buffer, root, settings)
  end })
  -- ":q!" unloads the buffer.
  vim.api.nvim_create_autocmd("BufWinLeave", { buffer = buffer, callback = function()
    drafts[root] = not settings.amend and vim.bo[buffer].modified and message_in(buffer) or nil
    vim.bo[buffer].modified = false
  end })
end

local function show(root, settings, message)
  local kind = settings.amend and "amend" or "commit"
  local name = ("nebgit://%s//%s"):format(root, kind)
  local buffer = scratch.buffer(name)
  local is_open = vim.fn.bufwinid(buffer) ~= -1
  if not is_open then
    -- For an amendment, HEAD and with it the message may be another one now.
    vim.cmd("bwipeout! " .. buffer)
    buffer = scratch.buffer(name)
  end
  scratch.show(buffer)
  if not is_open then
    create(buffer, root, settings, message)
  end
  vim.api.nvim_win_set_cursor(0, { 1, 0 })
end

-- Opens the buffer for a new commit or, with settings.amend, for the message of the last one.
function M.open(root, settings)
  if not settings.amend then
    return show(root, settings, drafts[root] or "")
  end
  requests.perform("history", root, { options = { LogOutputLimit = 1 } }, function(failure, records)
    local last = records[1]
    if failure or not last then
      return messages.failure(failure or { message = "there is no commit to amend" })
    end
    show(root, settings, last.Subject .. (last.Body and "\n\n" .. vim.trim(last.Body) or ""))
  end)
end

return M
