-- Makes and uses stashes.
local M = {}

local actions = require("nebgit.actions")
local commit_view = require("nebgit.commit_view")
local messages = require("nebgit.messages")
local questions = require("nebgit.questions")
local requests = require("nebgit.requests")

-- Stashes all changes, with untracked files if asked.
function M.push(root, with_untracked)
  questions.input({ prompt = "Message of the stash (optional): " }, function(message)
    if not message then
      return
    end
    local options = { Action = "push", IncludeUntracked = with_untracked or nil }
    options.Message = message ~= "" and message or nil
    actions.perform("stash", root, { options = options }, function(records)
      messages.info(#records == 0 and "nothing to stash" or "stashed")
    end)
  end)
end

-- The id, not the name, because the names of all stashes change when one is made or dropped.
local function use(root, action, stash)
  local details = { from = stash.ObjectID, options = { Action = action } }
  actions.perform("stash", root, details, function()
    messages.info(({ apply = "applied", pop = "popped", drop = "dropped" })[action])
  end)
end

local function choose_action(root, stash)
  local items = { "Pop", "Apply", "Show", "Drop" }
  questions.select(items, { prompt = stash.Subject }, function(choice)
    if choice == "Show" then
      commit_view.open(root, stash.ObjectID)
    elseif choice == "Drop" then
      actions.confirm("Drop? The stash is lost: " .. stash.Subject, "Drop", function()
        use(root, "drop", stash)
      end)
    elseif choice then
      use(root, choice:lower(), stash)
    end
  end)
end

-- Asks what to do: make a stash, or use one.
function M.menu(root)
  requests.perform("stash", root, {}, function(failure, stashes)
    if failure then
      return messages.failure(failure)
    end
    local items = { "Stash changes", "Stash changes and untracked files" }
    vim.list_extend(items, stashes)
    questions.select(items, {
      prompt = "Stash:",
      format_item = function(item)
        return type(item) == "string" and item or ("%s: %s"):format(item.Name, item.Subject)
      end,
    }, function(choice, index)
      if type(choice) == "string" then
        M.push(root, index == 2)
      elseif choice then
        choose_action(root, choice)
      end
    end)
  end)
end

return M
