-- A commit: its message, and its changes against its first parent.
local M = {}

local diff_text = require("nebgit.diff_text")
local messages = require("nebgit.messages")
local requests = require("nebgit.requests")
local scratch = require("nebgit.scratch")
local slices = require("nebgit.slices")
local times = require("nebgit.times")

-- The ids of the empty tree in repositories with SHA-1 and SHA-256, with which a first commit is
-- compared, see gitglossary(7).
local empty_trees = {
  [40] = "4b825dc642cb6eb9a060e54bf8d69288fbee4904",
  [64] = "6ef19b41225c5369f1c104d45d8d85efa9b057b53b14b4b9b939dd74decc5321",
}

local function header(commit)
  local lines = {
    "commit " .. commit.ObjectID,
    ("Author: %s <%s>"):format(commit.Author, commit.AuthorEmail),
    "Date:   " .. times.full(commit.AuthorTime, commit.AuthorTimeOffset),
  }
  if commit.References and #commit.References > 0 then
    lines[#lines + 1] = "Refs:   " .. table.concat(commit.References, ", ")
  end
  if #(commit.Parents or {}) > 1 then
    table.insert(lines, 2, "Merge:  " .. table.concat(commit.Parents, " "))
  end
  lines = vim.tbl_map(scratch.line, lines)
  lines[#lines + 1] = ""
  local message = commit.Subject .. (commit.Body and "\n\n" .. commit.Body or "")
  for _, line in ipairs(vim.split(message:gsub("\n+$", ""), "\n", { plain = true })) do
    lines[#lines + 1] = line == "" and "" or "    " .. line
  end
  lines[#lines + 1] = ""
  return lines
end

local function append(buffer, lines)
  scratch.set_lines(buffer, -1, -1, lines)
end

-- Appends the changes of the records as they come.
local function show_changes(buffer, root, commit)
  local parent = (commit.Parents or {})[1] or empty_trees[#commit.ObjectID]
  local is_shown = function()
    return vim.api.nvim_buf_is_loaded(buffer)
  end
  local cancel = requests.perform("changes", root, {
    from = parent,
    to = commit.ObjectID,
    records = function(records)
      slices.each(records, function(record)
        append(buffer, diff_text.lines(record))
      end, is_shown)
    end,
  }, function(failure)
    if failure and is_shown() then
      messages.failure(failure)
    end
  end)
  vim.api.nvim_create_autocmd("BufWipeout", { buffer = buffer, callback = cancel })
end

-- Shows the commit in a window.
function M.open(root, revision)
  local details = { from = revision, options = { LogOutputLimit = 1 } }
  requests.perform("history", root, details, function(failure, records)
    local commit = records[1]
    if failure and failure.class == "revision-unknown" or not (failure or commit) then
      return messages.error(("'%s' is not a commit"):format(revision))
    elseif failure then
      return messages.failure(failure)
    end
    local buffer = scratch.buffer(("nebgit://%s//%s"):format(root, commit.ObjectID))
    local is_new = vim.api.nvim_buf_line_count(buffer) <= 1
    scratch.show(buffer)
    if is_new then
      vim.b[buffer].nebgit_root = root
      vim.bo[buffer].filetype = "git"
      scratch.map(buffer, {})
      scratch.set_lines(buffer, 0, -1, header(commit))
      show_changes(buffer, root, commit)
    end
  end)
end

return M
