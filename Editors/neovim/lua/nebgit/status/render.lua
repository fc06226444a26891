-- The lines of the status window.
local M = {}

local diff_text = require("nebgit.diff_text")
local model_of = require("nebgit.status.model")
local names = require("nebgit.names")
local operations = require("nebgit.operations")
local scratch = require("nebgit.scratch")

local function branch_line(head)
  local line = head.Name and "Branch: " .. head.Name
    or head.ObjectID and "Detached at " .. head.ObjectID:sub(1, 12)
    or "Branch: (unknown)"
  if not head.ObjectID then
    line = line .. " (no commits yet)"
  end
  if head.Upstream then
    line = line .. " → " .. head.Upstream
  end
  local parts = {}
  if (head.Ahead or 0) > 0 then
    parts[#parts + 1] = ("%d ahead"):format(head.Ahead)
  end
  if (head.Behind or 0) > 0 then
    parts[#parts + 1] = ("%d behind"):format(head.Behind)
  end
  return #parts == 0 and line or ("%s, %s"):format(line, table.concat(parts, ", "))
end

local function operation_line(operation)
  local line = ("Unfinished: %s"):format(operation.Kind)
  if operation.Step then
    line = ("%s, step %d of %d"):format(line, operation.Step, operation.StepCount)
  end
  if operation.ObjectID then
    line = ("%s, commit %s"):format(line, operation.ObjectID:sub(1, 12))
  end
  local keys = {}
  for _, action in ipairs({ "continue", "skip", "abort" }) do
    if operations.allows(operation.Kind, action) then
      keys[#keys + 1] = ("r%s %s"):format(action:sub(1, 1), action)
    end
  end
  return #keys == 0 and line or ("%s (%s)"):format(line, table.concat(keys, ", "))
end

-- Returns the line about a repository that is only inspected; switched_off are the names of its
-- settings that name programs.
local function inspection_line(switched_off)
  local line = "Not trusted: inspected only (:NEBGit trust)"
  if #switched_off > 0 then
    line = ("%s; switched off: %s"):format(line, table.concat(switched_off, ", "))
  end
  return scratch.line(line)
end

-- Returns the line of an entry.
local function entry_line(entry)
  local path = names.shown(entry.path)
  if entry.original then
    path = ("%s -> %s"):format(names.shown(entry.original), path)
  end
  return ("%-16s %s"):format(entry.state, path)
end

-- Collects lines, each with the item that the keys work on.
local function collector()
  local result = { lines = {}, items = {} }
  function result.add(text, item)
    result.lines[#result.lines + 1] = text
    result.items[#result.lines] = item
  end
  return result
end

local function add_diff(result, entry, file)
  if not file then
    return result.add("    (no text to compare)", entry)
  elseif file.IsBinary then
    return result.add("    (binary)", entry)
  end
  for _, hunk in ipairs(file.Hunks or {}) do
    local item = { kind = "hunk", section = entry.section, entry = entry, file = file, hunk = hunk }
    result.add("    " .. diff_text.heading(hunk), item)
    for _, line in ipairs(hunk.Lines) do
      result.add("    " .. line, item)
    end
  end
end

local function add_section(result, model, section, title, view)
  local entries = model[section]
  if #entries == 0 then
    return
  end
  result.add("", nil)
  result.add(("%s (%d)"):format(title, #entries), { kind = "section", section = section })
  local most = view.all[section] and #entries or math.min(#entries, view.max_paths)
  for index = 1, most do
    local entry = entries[index]
    result.add(entry_line(entry), entry)
    local diff = view.diffs[model_of.key(entry)]
    if diff then
      add_diff(result, entry, diff.file)
    end
  end
  if most < #entries then
    local text = ("… %d more; = shows all"):format(#entries - most)
    result.add(text, { kind = "more", section = section })
  end
end

-- Returns the `lines` of the window, and the `items` by line: entries, and tables with the kind
-- "section", "hunk" or "more". view has `is_inspected`, `has_failed`, `max_paths`, `all` (sections that are shown
-- in full) and `diffs` ({file = RECORD, section, path} by key of the entry).
function M.render(root, model, view)
  local result = collector()
  result.add("Working copy: " .. names.shown(root))
  if view.is_inspected then
    result.add(inspection_line(model.switched_off))
  end
  if not model.head then
    local failed = "The working copy could not be read; R tries again"
    result.add(view.has_failed and failed or "Reading …")
    return result
  end
  result.add(scratch.line(branch_line(model.head)))
  if (model.head.StashCount or 0) > 0 then
    result.add(("Stashes: %d"):format(model.head.StashCount))
  end
  for _, operation in ipairs(model.operations) do
    result.add(operation_line(operation), { kind = "operation" })
  end
  local before = #result.lines
  for _, section in ipairs(model_of.sections) do
    add_section(result, model, section[1], section[2], view)
  end
  if #result.lines == before then
    result.add("")
    result.add("Nothing to commit, the working copy is clean")
  end
  return result
end

return M
