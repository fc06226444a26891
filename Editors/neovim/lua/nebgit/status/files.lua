-- Stages, unstages and discards the entries and hunks of the status window.
local M = {}

local actions = require("nebgit.actions")
local messages = require("nebgit.messages")
local names = require("nebgit.names")
local patch = require("nebgit.patch")

-- The most files that a question names.
local most_named = 10

-- Returns the paths of the entries; both of renamed ones.
local function paths_of(entries)
  local paths = {}
  for _, entry in ipairs(entries) do
    paths[#paths + 1] = entry.path
    if entry.original and entry.section == "staged" then
      paths[#paths + 1] = entry.original
    end
  end
  return paths
end

-- Returns whether the item is a hunk of a modified file; hunks of other files stand for the file.
local function is_partial(item)
  return item.kind == "hunk" and item.entry.state == "modified"
end

-- Returns the entries of the items, without duplicates, in the named sections.
local function entries_in(state, items, sections)
  local entries, seen = {}, {}
  local function add(entry)
    if vim.tbl_contains(sections, entry.section) and not seen[entry] then
      seen[entry] = true
      entries[#entries + 1] = entry
    end
  end
  for _, item in ipairs(items) do
    if item.kind == "section" or item.kind == "more" then
      vim.tbl_map(add, state.model[item.section])
    elseif item.kind == "entry" or item.kind == "hunk" then
      add(item.entry or item)
    end
  end
  return entries
end

-- Returns what the items in the named sections stand for: `entries`, and `hunks` of the file at
-- `path`. Only the first file can be selected in part: the lines of the others include its entry.
local function selection_of(state, items, sections)
  local selection = { hunks = {} }
  selection.entries = entries_in(state, vim.tbl_filter(function(item)
    return not is_partial(item)
  end, items), sections)
  for _, item in ipairs(items) do
    local is_whole = vim.tbl_contains(selection.entries, item.entry)
    if is_partial(item) and vim.tbl_contains(sections, item.section) and not is_whole then
      selection.path = item.entry.path
      table.insert(selection.hunks, item.hunk)
    end
  end
  return selection
end

-- Carries out the request for the hunks, then for the entries, of the selection.
local function perform(name, state, selection, options)
  local function perform_for_entries()
    if #selection.entries > 0 then
      local details = { files = paths_of(selection.entries), options = options }
      actions.perform(name, state.root, details)
    end
  end
  if #selection.hunks == 0 then
    return perform_for_entries()
  end
  local text = patch.of_record(selection.path, selection.hunks, name ~= "stage")
  local details = { options = vim.tbl_extend("error", options, { Patch = text }) }
  actions.perform(name, state.root, details, perform_for_entries)
end

-- Stages or unstages the hunks and entries of the items.
local function change(name, state, items, sections)
  local selection = selection_of(state, items, sections)
  if #selection.entries + #selection.hunks == 0 then
    return messages.info(("nothing to %s here"):format(name))
  end
  perform(name, state, selection, {})
end

-- Stages the items: a list of items of the window.
function M.stage(state, items)
  change("stage", state, items, { "conflict", "untracked", "unstaged" })
end

-- Unstages the items.
function M.unstage(state, items)
  change("unstage", state, items, { "staged" })
end

-- Returns a question that names what would be lost: the hunks of the selection, and the records of
-- a dry run.
local function question_for(selection, records)
  local lines, count = {}, #selection.hunks
  if count > 0 then
    local hunks = count == 1 and "1 hunk" or count .. " hunks"
    lines[1] = ("  lose %s of %s"):format(hunks, names.shown(selection.path))
  end
  for _, record in ipairs(records) do
    local verb = record.State == "untracked" and "delete" or "lose changes of"
    lines[#lines + 1] = ("  %s %s"):format(verb, names.shown(record.Path))
  end
  if #lines > most_named then
    local more = ("  and %d more files"):format(#lines - most_named)
    lines = vim.list_extend(vim.list_slice(lines, 1, most_named), { more })
  end
  return "Discard? This cannot be undone:\n" .. table.concat(lines, "\n")
end

-- Discards unstaged changes and untracked files of the items, after a question that says what is
-- lost.
function M.discard(state, items)
  local selection = selection_of(state, items, { "untracked", "unstaged" })
  local function ask(records)
    actions.confirm(question_for(selection, records), "Discard", function()
      perform("discard", state, selection, { Force = true, IncludeUntracked = true })
    end)
  end
  if #selection.entries > 0 then
    local options = { DryRun = true, IncludeUntracked = true }
    local details = { files = paths_of(selection.entries), options = options }
    actions.perform("discard", state.root, details, ask)
  elseif #selection.hunks > 0 then
    ask({})
  else
    messages.info("nothing to discard here; staged changes must be unstaged first")
  end
end

return M
