-- The status window: reads the state, shows it, and keeps it up to date while it is visible.
local M = {}

local config = require("nebgit.config")
local messages = require("nebgit.messages")
local model_of = require("nebgit.status.model")
local render = require("nebgit.status.render")
local repository = require("nebgit.repository")
local requests = require("nebgit.requests")
local scratch = require("nebgit.scratch")
local trust = require("nebgit.trust")
local watch = require("nebgit.watch")

-- The number of paths that are read at a time.
local page_size = 100

-- By buffer: root, model, view (see render.lua), items by line, cancel (of a running refresh).
local states = {}

-- Returns the state of the buffer, by default the current one; nil if it shows no status.
function M.state(buffer)
  return states[buffer or vim.api.nvim_get_current_buf()]
end

local function key_of(item)
  if not item then
    return nil
  elseif item.kind == "entry" then
    return model_of.key(item)
  elseif item.kind == "hunk" then
    return model_of.key(item.entry)
  end
  return item.kind .. (item.section or "")
end

-- Scrolls the window to its first line if all of them fit.
local function show_all(buffer, window)
  if vim.api.nvim_buf_line_count(buffer) <= vim.api.nvim_win_get_height(window) then
    vim.api.nvim_win_call(window, function()
      vim.fn.winrestview({ topline = 1 })
    end)
  end
end

-- Puts the cursor of each window where the item is that it was on before.
local function restore_cursors(buffer, state, keys)
  for window, position in pairs(keys) do
    local line = math.min(position.line, vim.api.nvim_buf_line_count(buffer))
    if position.key and key_of(state.items[line]) ~= position.key then
      for number = 1, vim.api.nvim_buf_line_count(buffer) do
        if key_of(state.items[number]) == position.key then
          line = number
          break
        end
      end
    end
    vim.api.nvim_win_set_cursor(window, { line, 0 })
    show_all(buffer, window)
  end
end

-- Shows the model of the state.
function M.draw(buffer)
  local state, keys = states[buffer], {}
  for _, window in ipairs(vim.fn.win_findbuf(buffer)) do
    local line = vim.api.nvim_win_get_cursor(window)[1]
    keys[window] = { line = line, key = key_of(state.items[line]) }
  end
  state.view.max_paths = config.options.status.max_paths
  state.view.is_inspected = trust.is_inspected(state.root)
  local result = render.render(state.root, state.model, state.view)
  state.items = result.items
  scratch.set_lines(buffer, 0, -1, result.lines)
  restore_cursors(buffer, state, keys)
end

local load_diff

-- Shows a new model, and reads the changes of the entries that are expanded.
local function finish(buffer, state, model)
  state.model = model
  for key, diff in pairs(state.view.diffs) do
    local entry = model_of.find(model, diff.section, diff.path)
    if entry then
      load_diff(buffer, entry)
    else
      state.view.diffs[key] = nil
    end
  end
  M.draw(buffer)
  state.has_loaded = true
end

-- Reads the state into the model, then calls done(failure). Returns a function that ends it. Reads
-- pages, not partial results, because those have so many records that keys would have to wait.
local function read_state(root, is_background, model, done)
  local pages = requests.pages("state", root, { background = is_background }, page_size)
  local function read_on()
    pages:next(function(failure, records, is_last, outcome)
      model_of.add(model, records)
      model.switched_off = outcome and outcome.switchedOff or {}
      if failure or is_last then
        return done(failure)
      end
      read_on()
    end)
  end
  read_on()
  return function()
    pages:close()
  end
end

-- Reads the state again. A refresh that is running is started again afterwards.
function M.refresh(buffer, is_background)
  local state = states[buffer]
  if not state then
    return
  elseif state.is_running then
    state.is_outdated = true
    return
  end
  state.is_running, state.is_outdated = true, false
  local model, waiting = model_of.new(), 2
  local function done(failure)
    waiting = waiting - 1
    state.failure = state.failure or failure
    if waiting > 0 or states[buffer] ~= state then
      return
    end
    state.is_running = false
    state.view.has_failed = state.failure ~= nil
    if state.failure then
      messages.failure(state.failure)
      state.model = model_of.new()
      M.draw(buffer)
    else
      finish(buffer, state, model)
    end
    state.failure = nil
    if state.is_outdated then
      M.refresh(buffer, is_background)
    end
  end
  state.cancel = read_state(state.root, is_background, model, done)
  local details = { background = is_background }
  requests.perform("unfinished", state.root, details, function(failure, records)
    model_of.set_operations(model, records)
    done(failure)
  end)
end

-- Reads the changes of an entry and shows them below it.
function load_diff(buffer, entry)
  local state, key = states[buffer], model_of.key(entry)
  local options = { Staged = entry.section == "staged" or nil }
  local details = { files = { entry.path, entry.original }, options = options }
  requests.perform("changes", state.root, details, function(failure, records)
    if failure then
      return messages.failure(failure)
    elseif states[buffer] == state then
      local diff = { file = records[1], section = entry.section, path = entry.path }
      state.view.diffs[key] = diff
      M.draw(buffer)
    end
  end)
end

-- Shows or hides the changes of the entry, or all entries of the section.
function M.toggle(item)
  local buffer = vim.api.nvim_get_current_buf()
  local state = states[buffer]
  if item.kind == "more" or item.kind == "section" then
    state.view.all[item.section] = not state.view.all[item.section] or nil
    return M.draw(buffer)
  end
  local entry = item.entry or item
  if state.view.diffs[model_of.key(entry)] then
    state.view.diffs[model_of.key(entry)] = nil
    M.draw(buffer)
  elseif entry.section == "untracked" then
    messages.info("the file is not tracked; <CR> opens it")
  else
    load_diff(buffer, entry)
  end
end

local syntax = {
  [[syntax match NEBGitHeading /^\(Conflicts\|Untracked\|Unstaged\|Staged\) (\d\+)$/]],
  [[syntax match NEBGitLabel /^\(Working copy\|Not trusted\|Branch\|Stashes\|Unfinished\):/]],
  [[syntax match NEBGitAdded /^    +.*/]],
  [[syntax match NEBGitRemoved /^    -.*/]],
  [[syntax match NEBGitHunk /^    @@.*/]],
  [[syntax match NEBGitState /^\l[a-z ]\{15}/]],
  [[highlight default link NEBGitHeading Title]],
  [[highlight default link NEBGitLabel Label]],
  [[highlight default link NEBGitAdded diffAdded]],
  [[highlight default link NEBGitRemoved diffRemoved]],
  [[highlight default link NEBGitHunk diffLine]],
  [[highlight default link NEBGitState Type]],
}

local function create(buffer, root)
  local view = { all = {}, diffs = {} }
  states[buffer] = { root = root, model = model_of.new(), items = {}, view = view }
  vim.b[buffer].nebgit_root = root
  vim.bo[buffer].filetype = "nebgit-status"
  vim.cmd("runtime! syntax/diff.vim")
  for _, command in ipairs(syntax) do
    vim.cmd(command)
  end
  require("nebgit.status.keys").define(buffer)
  vim.api.nvim_create_autocmd("BufWipeout", { buffer = buffer, callback = function()
    if states[buffer].cancel then
      states[buffer].cancel()
    end
    states[buffer] = nil
  end })
end

-- Shows the status of the working copy at root.
function M.open(root)
  local buffer = scratch.buffer(("nebgit://%s//status"):format(root))
  scratch.show(buffer)
  if not states[buffer] then
    watch.ensure(root)
    create(buffer, root)
    M.draw(buffer)
  end
  M.refresh(buffer)
end

repository.on_change(function(root)
  for buffer, state in pairs(states) do
    if root == state.root and #vim.fn.win_findbuf(buffer) > 0 then
      -- In the background, because a status that writes the index would be a change of its own.
      M.refresh(buffer, true)
    end
  end
end)

return M
