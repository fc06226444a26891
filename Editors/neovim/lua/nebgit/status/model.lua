-- What the status window shows: the records of the request "working copy state" by section.
local M = {}

-- The sections in their order, and their titles.
M.sections = {
  { "conflict", "Conflicts" },
  { "untracked", "Untracked" },
  { "unstaged", "Unstaged" },
  { "staged", "Staged" },
}

-- Returns an empty model; its `head` is nil until that is read.
function M.new()
  return {
    operations = {}, switched_off = {},
    conflict = {}, untracked = {}, unstaged = {}, staged = {},
  }
end

local function add_entry(model, section, record, state)
  local list = model[section]
  list[#list + 1] = {
    kind = "entry",
    section = section,
    state = state,
    path = record.Path,
    original = state == "renamed" and record.OriginalPath or nil,
  }
end

-- Adds records of the request "working copy state".
function M.add(model, records)
  for _, record in ipairs(records) do
    if record.Kind == "head" then
      model.head = record
    elseif record.Kind == "conflict" then
      add_entry(model, "conflict", record, record.Conflict)
    elseif record.Kind == "untracked" then
      add_entry(model, "untracked", record, "untracked")
    else
      if record.IndexState then
        add_entry(model, "staged", record, record.IndexState)
      end
      if record.WorkingTreeState then
        add_entry(model, "unstaged", record, record.WorkingTreeState)
      end
    end
  end
end

-- Sets the records of the request "unfinished operation".
function M.set_operations(model, records)
  model.operations = vim.tbl_filter(function(record)
    return record.Kind ~= "conflict"
  end, records)
end

-- Returns the entry of the path in the section; nil if the section does not have it.
function M.find(model, section, path)
  for _, entry in ipairs(model[section]) do
    if entry.path == path then
      return entry
    end
  end
end

-- Returns a text that identifies an entry, also after the next refresh.
function M.key(entry)
  return entry.section .. "\0" .. entry.path
end

return M
