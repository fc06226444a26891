-- The blame of the current line, as virtual text behind it.
local M = {}

local config = require("nebgit.config")
local repository = require("nebgit.repository")
local requests = require("nebgit.requests")
local text = require("nebgit.text")
local times = require("nebgit.times")

local namespace = vim.api.nvim_create_namespace("nebgit-blame")
local timer = (vim.uv or vim.loop).new_timer()

-- Nil: as the settings say.
local is_enabled
-- The buffer with the virtual text; what is shown or asked for: buffer, line and changedtick.
local shown_in, current, cancel

local function enabled()
  if is_enabled == nil then
    return config.options.blame.enabled
  end
  return is_enabled
end

local function clear()
  if shown_in and vim.api.nvim_buf_is_valid(shown_in) then
    vim.api.nvim_buf_clear_namespace(shown_in, namespace, 0, -1)
  end
  if cancel then
    cancel()
  end
  shown_in, current, cancel = nil, nil, nil
end

-- Returns the text for a record of the request "annotation".
function M.describe(record)
  if record.IsUncommitted then
    return "Not committed"
  end
  local ago = times.ago(record.AuthorTime)
  return ("%s, %s • %s"):format(record.Author, ago, record.Subject or ""):gsub("\n", " ")
end

local function show(buffer, line, record)
  shown_in = buffer
  vim.api.nvim_buf_set_extmark(buffer, namespace, line - 1, 0, {
    virt_text = { { "  " .. M.describe(record), "NEBGitBlame" } },
    hl_mode = "combine",
  })
end

local function read(buffer, line, position)
  local options = { FirstLine = line, LastLine = line }
  if vim.bo[buffer].modified and text.is_large(buffer) then
    return
  elseif vim.bo[buffer].modified then
    options.Content = text.bytes_of(buffer)
  end
  local root, path = vim.b[buffer].nebgit_root, vim.b[buffer].nebgit_path
  local details = { files = { path }, options = options, background = true }
  cancel = requests.perform("annotation", root, details, function(failure, records)
    if current == position then
      cancel = nil
      -- Without a message: files that are not tracked have no blame.
      if not failure and records[1] and vim.api.nvim_buf_is_loaded(buffer) then
        show(buffer, line, records[1])
      end
    end
  end)
end

local function update()
  local buffer, line = vim.api.nvim_get_current_buf(), vim.api.nvim_win_get_cursor(0)[1]
  local tick = vim.api.nvim_buf_get_changedtick(buffer)
  local position = ("%d %d %d"):format(buffer, line, tick)
  if position == current then
    return
  end
  clear()
  if vim.b[buffer].nebgit_path and vim.bo[buffer].buftype == "" and vim.fn.mode() == "n" then
    current = position
    read(buffer, line, position)
  end
end

-- Shows the blame of the line when the cursor has rested for a moment.
function M.cursor_moved()
  if not enabled() then
    return
  end
  local buffer, line = vim.api.nvim_get_current_buf(), vim.api.nvim_win_get_cursor(0)[1]
  if shown_in and not (current or ""):find(("^%d %d "):format(buffer, line)) then
    clear()
  end
  timer:start(config.options.blame.delay, 0, vim.schedule_wrap(update))
end

-- Switches the blame of the current line on or off.
function M.toggle()
  is_enabled = not enabled()
  timer:stop()
  clear()
  if is_enabled then
    update()
  end
end

repository.on_change(function(_, changes)
  if changes.head and enabled() then
    clear()
    M.cursor_moved()
  end
end)

return M
