-- The log window: commits with a graph, read in pages as the window is scrolled.
local M = {}

local config = require("nebgit.config")
local graph = require("nebgit.log.graph")
local messages = require("nebgit.messages")
local names = require("nebgit.names")
local repository = require("nebgit.repository")
local requests = require("nebgit.requests")
local scratch = require("nebgit.scratch")
local times = require("nebgit.times")
local watch = require("nebgit.watch")

local namespace = vim.api.nvim_create_namespace("nebgit-log")

-- By buffer: root, path (nil for all files), pages, graph, commits by line, the ids of the first
-- and last commit, and skip: the id up to which commits that are read again are left out.
local states = {}

-- Returns the references of the commit as they are shown; "" without any.
local function references(commit)
  local shown = commit.IsHEAD and { "HEAD" } or {}
  for _, name in ipairs(commit.References or {}) do
    local short = name:gsub("^refs/tags/", "tag: "):gsub("^refs/heads/", "")
    shown[#shown + 1] = (short:gsub("^refs/remotes/", ""))
  end
  return #shown == 0 and "" or ("(%s) "):format(table.concat(shown, ", "))
end

-- Returns the line of a commit, and the parts that are highlighted: {group, first, last} in bytes.
local function commit_line(commit, lanes)
  local id, refs = commit.ObjectID:sub(1, 8), references(commit)
  local date = times.date(commit.AuthorTime, commit.AuthorTimeOffset)
  local subject = scratch.line(commit.Subject or "")
  local author = ("  %s, %s"):format(scratch.line(commit.Author or ""), date)
  local first = lanes == "" and 0 or #lanes + 1
  local line = (lanes == "" and "" or lanes .. " ") .. id .. " " .. refs .. subject .. author
  return line, {
    { "NEBGitID", first, first + #id },
    { "NEBGitReference", first + #id + 1, first + #id + 1 + #refs },
    { "NEBGitAuthor", #line - #author, #line },
  }
end

-- Appends the commits to the window.
local function append(buffer, state, commits)
  local lines, marks, start = {}, {}, state.line_count
  local function add(line, commit, parts)
    lines[#lines + 1] = line
    state.commits[start + #lines] = commit
    marks[#lines] = parts
  end
  local function add_row(line)
    add(line)
  end
  for _, commit in ipairs(commits) do
    local before, lanes, after = {}, "", {}
    if not state.path then
      before, lanes, after = state.graph:add(commit.ObjectID, commit.Parents or {})
    end
    vim.tbl_map(add_row, before)
    local line, parts = commit_line(commit, lanes)
    add(line, commit, parts)
    vim.tbl_map(add_row, after)
  end
  scratch.set_lines(buffer, start, start == 0 and -1 or start, lines)
  for index, parts in pairs(marks) do
    for _, part in ipairs(parts) do
      local group, first, last = unpack(part)
      vim.api.nvim_buf_set_extmark(buffer, namespace, start + index - 1, first,
        { end_col = last, hl_group = group })
    end
  end
  state.line_count = start + #lines
end

-- Begins to read the commits, from HEAD or the commit with the id.
local function open_pages(state, id)
  local options = { Follow = state.path and true or nil, Order = config.options.log.order }
  local files = state.path and { state.path } or nil
  local details = { files = files, from = id, options = options }
  state.pages = requests.pages("history", state.root, details, config.options.log.page_size)
end

-- Returns the commits without those up to state.skip.
local function without_skipped(state, commits)
  local rest = {}
  for _, commit in ipairs(commits) do
    if not state.skip then
      rest[#rest + 1] = commit
    elseif commit.ObjectID == state.skip then
      state.skip = nil
    end
  end
  state.first = state.first or rest[1] and rest[1].ObjectID
  state.last = rest[1] and rest[#rest].ObjectID or state.last
  return rest
end

-- Returns whether the window comes near the end of what was read.
local function needs_more(state, window)
  local last = math.max(vim.fn.line("w$", window), vim.api.nvim_win_get_cursor(window)[1])
  return state.line_count == 0 or state.skip
    or last >= state.line_count - config.options.log.page_size / 2
end

local reload, read_on

-- Handles a page; the server forgets a list after some time, and it is read again then.
local function handle_page(buffer, state, failure, commits, is_last)
  append(buffer, state, without_skipped(state, commits))
  if failure and failure.class == "cursor-closed" then
    state.skip = state.last
    open_pages(state, state.first)
    read_on(buffer)
  elseif state.skip and is_last then
    reload(buffer)
  elseif failure then
    messages.failure(failure)
  elseif not is_last then
    read_on(buffer)
  elseif state.line_count == 0 then
    scratch.set_lines(buffer, 0, -1, { "No commits" })
  end
end

-- Reads the next page if the window comes near the end of what was read.
function read_on(buffer)
  local state = states[buffer]
  local window = vim.fn.bufwinid(buffer)
  if not state or window == -1 or not needs_more(state, window) then
    return
  end
  state.pages:next(function(failure, commits, is_last)
    if states[buffer] == state then
      handle_page(buffer, state, failure, commits, is_last)
      M.restore_cursor(buffer, state)
    end
  end)
end

-- Puts the cursor on the commit that it was on before a reload.
function M.restore_cursor(buffer, state)
  local window = vim.fn.bufwinid(buffer)
  for line, commit in pairs(state.wanted and window ~= -1 and state.commits or {}) do
    if commit.ObjectID == state.wanted then
      state.wanted = nil
      return vim.api.nvim_win_set_cursor(window, { line, 0 })
    end
  end
end

-- Reads the log from its beginning.
function reload(buffer)
  local state = states[buffer]
  local window = vim.fn.bufwinid(buffer)
  local line = window ~= -1 and vim.api.nvim_win_get_cursor(window)[1] or 1
  local commit = state.commits and state.commits[line]
  if state.pages then
    state.pages:close()
  end
  states[buffer] = {
    root = state.root, path = state.path, graph = graph.new(), commits = {}, line_count = 0,
    wanted = line > 1 and commit and commit.ObjectID or nil,
  }
  open_pages(states[buffer])
  read_on(buffer)
end

local function commit_at_cursor(buffer)
  local commit = states[buffer].commits[vim.api.nvim_win_get_cursor(0)[1]]
  if not commit then
    messages.info("no commit here")
  end
  return commit
end

local function define_keys(buffer)
  scratch.map(buffer, {
    { "<CR>", function()
      local commit = commit_at_cursor(buffer)
      if commit then
        require("nebgit.commit_view").open(states[buffer].root, commit.ObjectID)
      end
    end, "show the commit" },
    { "y", function()
      local commit = commit_at_cursor(buffer)
      if commit then
        vim.fn.setreg('"', commit.ObjectID)
        messages.info("copied " .. commit.ObjectID)
      end
    end, "copy the id of the commit" },
    { "R", function()
      reload(buffer)
    end, "read the log again" },
  })
end

local function create(buffer, root, path)
  states[buffer] = { root = root, path = path }
  vim.b[buffer].nebgit_root = root
  vim.bo[buffer].filetype = "nebgit-log"
  vim.cmd("highlight default link NEBGitID Identifier")
  vim.cmd("highlight default link NEBGitReference Special")
  vim.cmd("highlight default link NEBGitAuthor Comment")
  define_keys(buffer)
  vim.api.nvim_create_autocmd({ "CursorMoved", "WinScrolled" }, { callback = function()
    if not states[buffer] then
      return true
    end
    read_on(buffer)
  end })
  vim.api.nvim_create_autocmd("BufWipeout", { buffer = buffer, callback = function()
    states[buffer].pages:close()
    states[buffer] = nil
  end })
end

-- Shows the log of the working copy at root or, if path is given, of that file.
function M.open(root, path)
  local suffix = path and "/" .. names.shown(path) or ""
  local buffer = scratch.buffer(("nebgit://%s//log%s"):format(root, suffix))
  scratch.show(buffer)
  if not states[buffer] then
    watch.ensure(root)
    create(buffer, root, path)
  end
  reload(buffer)
end

repository.on_change(function(root, changes)
  for buffer, state in pairs(changes.head and states or {}) do
    local window = vim.fn.bufwinid(buffer)
    local is_near_top = window ~= -1 and vim.fn.line("w0", window) <= config.options.log.page_size
    if is_near_top and root == state.root then
      reload(buffer)
    end
  end
end)

return M
