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

-- Carries out the request for the one hunk, or all the entries, of the items.
local function change(name, state, items, sections)
  local first = items[1]
  if first and is_partial(first) and vim.tbl_contains(sections, first.section) then
    local options = { Patch = patch.of_record(first.entry.path, first.hunk) }
    return actions.perform(name, state.root, { options = options })
  end
  local entries = entries_in(state, items, sections)
  if #entries == 0 then
    return messages.info(("nothing to %s here"):format(name))
  end
  actions.perform(name, state.root, { files = paths_of(entries) })
end

-- Stages the items: a list of items of the window.
function M.stage(state, items)
  change("stage", state, items, { "conflict", "untracked", "unstaged" })
end

-- Unstages the items.
function M.unstage(state, items)
  change("unstage", state, items, { "staged" })
end

-- Returns a question that names what would be lost.
local function question_for(records)
  local lines = {}
  for index = 1, math.min(#records, most_named) do
    local verb = records[index].State == "untracked" and "delete" or "lose changes of"
    lines[index] = ("  %s %s"):format(verb, names.shown(records[index].Path))
  end
  if #records > most_named then
    lines[#lines + 1] = ("  and %d more files"):format(#records - most_named)
  end
  return "Discard? This cannot be undone:\n" .. table.concat(lines, "\n")
end

local function discard_hunk(state, item)
  local options = { Patch = patch.of_record(item.entry.path, item.hunk), Force = true }
  local question = "Discard this hunk of %s? This cannot be undone."
  actions.confirm(question:format(names.shown(item.entry.path)), "Discard", function()
    actions.perform("discard", state.root, { options = options })
  end)
end

-- Discards unstaged changes and untracked files of the items, after a question that says what is
-- lost.
function M.discard(state, items)
  local first = items[1]
  if first and is_partial(first) and first.section == "unstaged" then
    return discard_hunk(state, first)
  end
  local entries = entries_in(state, items, { "untracked", "unstaged" })
  if #entries == 0 then
    return messages.info("nothing to discard here; staged changes must be unstaged first")
  end
  local files = paths_of(entries)
  local options = { DryRun = true, IncludeUntracked = true }
  actions.perform("discard", state.root, { files = files, options = options }, function(records)
    actions.confirm(question_for(records), "Discard", function()
      local force = { Force = true, IncludeUntracked = true }
      actions.perform("discard", state.root, { files = files, options = force })
    end)
  end)
end

return M
