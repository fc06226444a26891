-- Commands for the hunk at the cursor.
local M = {}

local changes = require("nebgit.changes")
local hunks = require("nebgit.hunks")
local messages = require("nebgit.messages")
local patch = require("nebgit.patch")
local popup = require("nebgit.popup")
local repository = require("nebgit.repository")
local requests = require("nebgit.requests")
local text = require("nebgit.text")

-- Returns the state of the current buffer, compared now; shows a message and returns nil if its
-- file has no version in the index.
local function current_state()
  local buffer = vim.api.nvim_get_current_buf()
  changes.compare(buffer)
  local state = changes.state(buffer)
  if not state or not state.base then
    messages.info("the file is not tracked")
    return nil
  end
  return state, buffer
end

local function cursor_line()
  return vim.api.nvim_win_get_cursor(0)[1]
end

-- Returns the hunks of the state in the lines range[1] to range[2], cut there; without a range the
-- one at the cursor. Shows a message if no hunk was found.
local function selected(state, range)
  local found = {}
  if not range then
    found = { hunks.at(state.hunks, cursor_line()) }
  end
  for _, hunk in ipairs(range and state.hunks or {}) do
    local first, last = hunks.range(hunk)
    if first <= range[2] and last >= range[1] then
      found[#found + 1] = hunks.part(hunk, range[1], range[2])
    end
  end
  if #found == 0 then
    messages.info("no change here")
  end
  return found
end

-- Moves the cursor to the next hunk, or the previous one if direction is -1.
function M.go(direction)
  local state = current_state()
  local line = state and hunks.next_line(state.hunks, cursor_line(), direction)
  if line then
    vim.cmd("normal! m'")
    vim.api.nvim_win_set_cursor(0, { line, 0 })
    vim.cmd("silent! normal! zv")
  elseif state then
    messages.info("no changes")
  end
end

-- Returns the lines of the old and new text of a hunk.
local function sides(state, buffer, hunk)
  local old = vim.list_slice(state.base, hunk.old_start, hunk.old_start + hunk.old_count - 1)
  local first = hunk.new_start - 1
  local new = hunk.new_count == 0 and {}
    or vim.api.nvim_buf_get_lines(buffer, first, first + hunk.new_count, true)
  return hunk.old_count == 0 and {} or old, new
end

-- Shows the hunk at the cursor in a floating window.
function M.preview()
  local state, buffer = current_state()
  local hunk = state and selected(state)[1]
  if not hunk then
    return
  end
  local old, new = sides(state, buffer, hunk)
  local lines = { ("@@ -%d,%d +%d,%d @@"):format(
    hunk.old_start, hunk.old_count, hunk.new_start, hunk.new_count) }
  for _, line in ipairs(old) do
    lines[#lines + 1] = "-" .. line
  end
  for _, line in ipairs(new) do
    lines[#lines + 1] = "+" .. line
  end
  popup.show(lines, "diff")
end

-- Makes the lines of the hunk at the cursor, or in the range, as in the index. Undo reverts it.
function M.reset(range)
  local state, buffer = current_state()
  local found = state and selected(state, range) or {}
  for index = #found, 1, -1 do
    local hunk = found[index]
    local first = hunk.new_count == 0 and hunk.new_start or hunk.new_start - 1
    local old = sides(state, buffer, hunk)
    if #state.base == 0 then
      old = { "" }
    end
    local is_empty = #text.lines_of(buffer) == 0
    local last = is_empty and 1 or first + hunk.new_count
    vim.api.nvim_buf_set_lines(buffer, is_empty and 0 or first, last, true, old)
  end
  if #found > 0 then
    changes.compare(buffer)
  end
end

-- Carries out a request that changes the index, then reports the change.
local function change_index(name, state, details)
  requests.perform(name, state.root, details, function(failure)
    repository.changed(state.root, { "index" })
    if failure then
      messages.failure(failure)
    end
  end)
end

-- Returns the patch that stages the hunks on top of the content of the index.
local function stage_patch(state, buffer, content, found)
  local carriage_return = text.has_carriage_returns((text.split(content))) and "\r" or ""
  local replacements = vim.tbl_map(function(hunk)
    local _, new = sides(state, buffer, hunk)
    return { hunk, vim.tbl_map(function(line)
      return line .. carriage_return
    end, text.encoded(buffer, new)) }
  end, found)
  return patch.replacing(state.path, content, replacements, text.ends_with_line_end(buffer))
end

-- Stages the hunk at the cursor, or the changed lines in the range, as they are in the buffer.
function M.stage(range)
  local state, buffer = current_state()
  local found = state and selected(state, range) or {}
  if #found == 0 then
    return
  end
  local tick, base = vim.api.nvim_buf_get_changedtick(buffer), state.base
  local details = { files = { state.path }, options = { Stage = 0 } }
  requests.perform("content", state.root, details, function(failure, records)
    if failure then
      return messages.failure(failure)
    elseif not vim.api.nvim_buf_is_loaded(buffer)
      or vim.api.nvim_buf_get_changedtick(buffer) ~= tick then
      return messages.warn("the text has changed meanwhile; nothing was staged")
    end
    local content = records[1].Content or records[1].ContentBytes or ""
    if not vim.deep_equal(text.as_in_buffer(buffer, content), base) then
      changes.reload(buffer)
      local advice = "the index has changed, or a filter changes the file; "
        .. "try again, or stage the whole file"
      return messages.warn(advice)
    end
    local options = { Patch = stage_patch(state, buffer, content, found) }
    change_index("stage", state, { options = options })
  end)
end

-- Unstages the staged hunk at the cursor.
function M.unstage()
  local state = current_state()
  if not state then
    return
  end
  local line = hunks.old_line(state.hunks, cursor_line())
  local details = { files = { state.path }, options = { Staged = true } }
  requests.perform("changes", state.root, details, function(failure, records)
    if failure then
      return messages.failure(failure)
    end
    local file = records[1] or {}
    for _, hunk in ipairs(file.Hunks or {}) do
      if line >= hunk.NewStart and line < hunk.NewStart + math.max(1, hunk.NewCount) then
        return M.unstage_hunk(state, file, hunk)
      end
    end
    messages.info("no staged change here")
  end)
end

-- Unstages a hunk of a record of the request "changes". A new file is unstaged as a whole.
function M.unstage_hunk(state, file, hunk)
  if file.State == "added" then
    change_index("unstage", state, { files = { file.Path } })
  else
    local text_of_patch = patch.of_record(file.Path, { hunk }, true)
    change_index("unstage", state, { options = { Patch = text_of_patch } })
  end
end

return M
