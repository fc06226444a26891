-- The blame of a file, in a window beside it that scrolls with it.
local M = {}

local commit_view = require("nebgit.commit_view")
local messages = require("nebgit.messages")
local requests = require("nebgit.requests")
local revision = require("nebgit.revision")
local scratch = require("nebgit.scratch")
local slices = require("nebgit.slices")
local text = require("nebgit.text")
local times = require("nebgit.times")

local width = 42

-- What each blame buffer shows: root, path, window of the file, records by line.
local sources = {}

local function describe(record)
  if record.IsUncommitted then
    return "Not committed"
  end
  local author = vim.fn.strcharpart(scratch.line(record.Author), 0, width - 21)
  local padding = (" "):rep(width - 21 - vim.fn.strdisplaywidth(author))
  local date = times.date(record.AuthorTime, record.AuthorTimeOffset)
  return ("%s %s%s %s"):format(record.ObjectID:sub(1, 8), author, padding, date)
end

local function show_record(buffer, record)
  local lines, description = {}, describe(record)
  for offset = 0, record.LineCount - 1 do
    lines[#lines + 1] = description
    sources[buffer].records[record.FirstLine + offset] = record
  end
  local first = record.FirstLine - 1
  scratch.set_lines(buffer, first, first + #lines, lines)
end

-- Returns the record of the line of the cursor; shows a message if it has no commit.
local function committed_record(buffer)
  local record = sources[buffer].records[vim.api.nvim_win_get_cursor(0)[1]]
  if record and not record.IsUncommitted then
    return record
  end
  messages.info("the line is not committed")
end

local function open_commit(buffer)
  local record = committed_record(buffer)
  if record then
    commit_view.open(sources[buffer].root, record.ObjectID)
  end
end

-- Shows the file as it was before the commit of the line, with its blame.
local function open_parent(buffer)
  local record, source = committed_record(buffer), sources[buffer]
  if not record then
    return
  elseif not record.PreviousID then
    return messages.info("the commit added the line with the file")
  end
  local options = { LogOutputLimit = 1, LogOutputFilesChanged = true }
  local details = { from = record.ObjectID, options = options }
  requests.perform("history", source.root, details, function(failure, records)
    if failure then
      return messages.failure(failure)
    end
    local path = record.OriginalPath
    for _, change in ipairs(records[1] and records[1].Changes or {}) do
      path = change.Path == path and change.OriginalPath or path
    end
    if sources[buffer] ~= source or not vim.api.nvim_win_is_valid(source.window) then
      return
    end
    vim.api.nvim_set_current_win(source.window)
    vim.cmd("silent! bwipeout " .. buffer)
    revision.open(source.root, path, record.PreviousID, function(window)
      vim.api.nvim_set_current_win(window)
      pcall(vim.api.nvim_win_set_cursor, window, { record.OriginalLine, 0 })
      M.open()
    end)
  end)
end

-- Opens the window beside the current one and returns its buffer.
local function open_window(source, line_count)
  local file_buffer, view = vim.api.nvim_get_current_buf(), vim.fn.winsaveview()
  vim.wo.scrollbind, vim.wo.cursorbind, vim.wo.wrap, vim.wo.foldenable = true, true, false, false
  local name = ("nebgit://%s//blame/%d/%s"):format(source.root, file_buffer, source.path)
  local buffer = scratch.buffer(name)
  scratch.set_lines(buffer, 0, -1, vim.split(("\n"):rep(line_count - 1), "\n"))
  scratch.show(buffer, ("leftabove vertical %dsplit"):format(width))
  vim.wo.winfixwidth, vim.wo.scrollbind, vim.wo.cursorbind = true, true, true
  vim.fn.winrestview({ topline = view.topline, lnum = view.lnum })
  vim.cmd("syncbind")
  vim.api.nvim_create_autocmd("BufWipeout", { buffer = buffer, callback = function()
    if vim.api.nvim_win_is_valid(source.window) then
      vim.wo[source.window].scrollbind, vim.wo[source.window].cursorbind = false, false
    end
    source.cancel()
    sources[buffer] = nil
  end })
  return buffer
end

-- Shows the blame of the current buffer's file, also of text that is not saved.
function M.open()
  local buffer = vim.api.nvim_get_current_buf()
  local source = {
    root = vim.b[buffer].nebgit_root,
    path = vim.b[buffer].nebgit_path,
    window = vim.api.nvim_get_current_win(),
    records = {},
  }
  if not source.path then
    local has_file = vim.bo[buffer].buftype == "" and vim.api.nvim_buf_get_name(buffer) ~= ""
    return messages.info(has_file and "the file is in no repository" or "this window has no file")
  elseif vim.bo[buffer].modified and text.is_large(buffer) then
    return messages.info("the text is too large to blame it unsaved; write the file first")
  end
  local options = vim.bo[buffer].modified and { Content = text.bytes_of(buffer) } or nil
  local blame = open_window(source, vim.api.nvim_buf_line_count(buffer))
  sources[blame] = source
  scratch.map(blame, {
    { "<CR>", function() open_commit(blame) end, "show the commit of the line" },
    { "-", function() open_parent(blame) end, "blame the file before that commit" },
  })
  source.cancel = requests.perform("annotation", source.root, {
    files = { source.path },
    from = vim.b[buffer].nebgit_revision,
    options = options,
    records = function(records)
      slices.each(records, function(record)
        show_record(blame, record)
      end, function()
        return sources[blame] == source
      end)
    end,
  }, function(failure)
    if failure and sources[blame] == source then
      vim.cmd("bwipeout " .. blame)
      messages.failure(failure)
    end
  end)
end

return M
