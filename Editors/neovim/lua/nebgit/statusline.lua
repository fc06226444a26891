-- The text for a status line: the branch, and the changed lines of the buffer.
local M = {}

local repository = require("nebgit.repository")
local requests = require("nebgit.requests")

-- Text of the branch by working copy; "" until it is known.
local branches = {}

local function show(root, text)
  if branches[root] ~= text then
    branches[root] = text
    vim.cmd("redrawstatus!")
  end
end

local function describe(branch, record)
  local text = branch
  if (record.Ahead or 0) > 0 then
    text = ("%s ↑%d"):format(text, record.Ahead)
  end
  if (record.Behind or 0) > 0 then
    text = ("%s ↓%d"):format(text, record.Behind)
  end
  return text
end

-- Reads the branch. Asks for the current branch and its reference only, because the state of the
-- working copy would read every file.
local function read(root)
  branches[root] = branches[root] or ""
  requests.perform("current_branch", root, { background = true }, function(failure, records)
    local branch = not failure and records[1] and records[1].Name
    if not branch then
      return show(root, failure and "" or "(no commits yet)")
    elseif branch:find("^%(") then
      return show(root, "(detached)")
    end
    local details = { destination = "refs/heads/" .. branch, background = true }
    requests.perform("references", root, details, function(_, references)
      show(root, describe(branch, references[1] or {}))
    end)
  end)
end

repository.on_change(function(root, changes)
  if branches[root] and (changes.head or changes.references) then
    read(root)
  end
end)

-- Returns the text for the buffer of the window whose status line is drawn, such as
-- "main ↑1 +3 ~1 -2"; "" outside a working copy.
function M.text()
  local buffer = vim.api.nvim_win_get_buf(vim.g.statusline_winid or 0)
  local root = vim.b[buffer].nebgit_root
  if not root then
    return ""
  elseif not branches[root] then
    read(root)
  end
  local parts, counts = { branches[root] }, vim.b[buffer].nebgit_changes or {}
  for index, sign in ipairs({ "+", "~", "-" }) do
    if (counts[index] or 0) > 0 then
      parts[#parts + 1] = sign .. counts[index]
    end
  end
  return table.concat(parts, " ")
end

return M
