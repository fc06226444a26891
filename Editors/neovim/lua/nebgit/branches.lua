-- Switches and creates branches.
local M = {}

local actions = require("nebgit.actions")
local messages = require("nebgit.messages")
local questions = require("nebgit.questions")
local requests = require("nebgit.requests")

local create_item = "Create a branch …"

-- Switches to a branch, tag or revision.
function M.switch_to(root, name)
  actions.perform("checkout", root, { destination = name }, function()
    messages.info(("switched to '%s'"):format(name))
  end)
end

-- Creates the branch at HEAD and switches to it.
function M.create(root, name)
  actions.perform("create_branch", root, { destination = name }, function()
    M.switch_to(root, name)
  end)
end

-- Merges the branch, tag or revision into the current branch. Stops at conflicts.
function M.merge(root, name)
  local details = { authenticates = true, destination = name }
  actions.perform("integrate", root, details, function(records)
    local head = records[1] or {}
    local is_new = head.OldObjectID ~= head.ObjectID
    messages.info(is_new and ("merged '%s'"):format(name) or "already up to date")
  end)
end

-- Returns the names to choose from: branches, then remote branches without a branch of their name.
local function choices(records)
  local names, seen = {}, {}
  for _, record in ipairs(records) do
    local name = record.Name:match("^refs/heads/(.*)$")
    if name and not record.IsCurrent then
      names[#names + 1] = name
    end
    seen[name or ""] = true
  end
  for _, record in ipairs(records) do
    local name = record.Name:match("^refs/remotes/[^/]+/(.*)$")
    if name and not record.SymbolicTarget and not seen[name] then
      seen[name] = true
      names[#names + 1] = name
    end
  end
  return names
end

-- Switches to the named branch; without a name, asks for one.
function M.switch(root, name)
  if name then
    return M.switch_to(root, name)
  end
  requests.perform("references", root, {}, function(failure, records)
    if failure then
      return messages.failure(failure)
    end
    local items = vim.list_extend(choices(records), { create_item })
    questions.select(items, { prompt = "Switch to:" }, function(choice)
      if choice == create_item then
        questions.input({ prompt = "Name of the new branch: " }, function(new_name)
          if new_name and new_name ~= "" then
            M.create(root, new_name)
          end
        end)
      elseif choice then
        M.switch_to(root, choice)
      end
    end)
  end)
end

return M
