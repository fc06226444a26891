-- The changed lines of each buffer against the index, also of text that is not saved. The content
-- in the index is read once per change of the index; the editor compares.
local M = {}

local config = require("nebgit.config")
local hunks = require("nebgit.hunks")
local repository = require("nebgit.repository")
local requests = require("nebgit.requests")
local text = require("nebgit.text")
local watch = require("nebgit.watch")

local uv = vim.uv or vim.loop

-- The most bytes of a file in the index; larger ones are not compared.
local most_bytes = 4 * 1024 * 1024

-- By buffer: root, path, base (lines in the index; nil if the file is not tracked), hunks, timer.
local states = {}
local handlers = {}

-- Calls handler(buffer, hunks) when the hunks of a buffer were compared again.
function M.on_update(handler)
  handlers[#handlers + 1] = handler
end

-- Returns the state of the buffer: `root`, `path`, `base`, `hunks`; nil if its file is in no
-- working copy.
function M.state(buffer)
  local state = states[buffer == 0 and vim.api.nvim_get_current_buf() or buffer]
  return state and state.root and state
end

local function report(buffer, state)
  vim.b[buffer].nebgit_changes = state.base and { hunks.counts(state.hunks) } or nil
  for _, handler in ipairs(handlers) do
    handler(buffer, state.hunks)
  end
end

-- Compares the text of the buffer now.
function M.compare(buffer)
  local state = M.state(buffer)
  if not state or not vim.api.nvim_buf_is_loaded(buffer) then
    return
  end
  local is_short = vim.api.nvim_buf_line_count(buffer) <= config.options.signs.max_lines
  state.hunks = {}
  if state.base and is_short then
    state.hunks = hunks.between(state.base, text.lines_of(buffer))
  end
  report(buffer, state)
end

-- Compares the buffer when its text has not changed for a moment.
local function compare_soon(buffer)
  local state = states[buffer]
  state.timer:start(config.options.signs.delay, 0, vim.schedule_wrap(function()
    M.compare(buffer)
  end))
end

-- Reads the content in the index again, and compares.
function M.reload(buffer)
  local state = M.state(buffer)
  if not state then
    return
  end
  if state.cancel then
    state.cancel()
  end
  state.is_stale = false
  state.cancel = requests.perform("content", state.root, {
    files = { state.path },
    options = { Stage = 0, ApplyFilters = true },
    limits = { outputBytes = most_bytes },
    background = true,
  }, function(failure, records)
    if failure and failure.class == "cancelled" or states[buffer] ~= state then
      return
    end
    state.cancel = nil
    local content = records[1] and (records[1].Content or records[1].ContentBytes)
    state.base = not failure and vim.api.nvim_buf_is_loaded(buffer)
        and text.as_in_buffer(buffer, content or "") or nil
    M.compare(buffer)
  end)
end

-- Forgets the buffer, where its file is, and removes its signs.
function M.detach(buffer)
  local state = states[buffer]
  if not state then
    return
  end
  states[buffer] = nil
  state.timer:close()
  if state.cancel then
    state.cancel()
  end
  if vim.api.nvim_buf_is_loaded(buffer) then
    vim.b[buffer].nebgit_changes = nil
    vim.b[buffer].nebgit_root, vim.b[buffer].nebgit_path = nil, nil
    for _, handler in ipairs(handlers) do
      handler(buffer, {})
    end
  end
end

local function follow(buffer, state)
  vim.api.nvim_buf_attach(buffer, false, {
    on_lines = function()
      if states[buffer] ~= state then
        return true
      end
      compare_soon(buffer)
    end,
    on_reload = function()
      if states[buffer] == state then
        M.reload(buffer)
      end
    end,
    on_detach = function()
      if states[buffer] == state then
        M.detach(buffer)
      end
    end,
  })
end

-- Begins to compare the buffer, if it has a file in a working copy.
function M.attach(buffer)
  local name = vim.api.nvim_buf_get_name(buffer)
  if states[buffer] and states[buffer].name == name then
    return M.reload(buffer)
  end
  M.detach(buffer)
  if vim.bo[buffer].buftype ~= "" or name == "" then
    return
  end
  local state = { name = name, hunks = {}, timer = uv.new_timer() }
  states[buffer] = state
  repository.find(name, function(root, path)
    if states[buffer] ~= state then
      return
    elseif not root or not vim.api.nvim_buf_is_loaded(buffer) then
      return M.detach(buffer)
    end
    state.root, state.path = root, path
    vim.b[buffer].nebgit_root, vim.b[buffer].nebgit_path = root, path
    watch.ensure(root)
    follow(buffer, state)
    M.reload(buffer)
  end)
end

-- Reloads the buffer if its index changed while it was hidden.
function M.show(buffer)
  local state = M.state(buffer)
  if state and state.is_stale then
    M.reload(buffer)
  end
end

repository.on_change(function(root, changes)
  if not (changes.index or changes.operation) then
    return
  end
  for buffer, state in pairs(states) do
    if state.root and state.root == root then
      state.is_stale = true
      if #vim.fn.win_findbuf(buffer) > 0 then
        M.reload(buffer)
      end
    end
  end
end)

return M
