-- Continues, skips or aborts an unfinished merge, rebase, cherry-pick or revert.
local M = {}

local actions = require("nebgit.actions")
local messages = require("nebgit.messages")
local requests = require("nebgit.requests")

local done = { continue = "continued", skip = "skipped", abort = "aborted" }

-- What the actions do for each kind of operation. A merge has no commits to skip.
local operations = {
  merge = { continue = true, abort = true },
  rebase = { continue = true, skip = true, abort = true },
  apply = { continue = true, skip = true, abort = true },
  ["cherry-pick"] = { continue = true, skip = true, abort = true },
  revert = { continue = true, skip = true, abort = true },
}

-- Returns whether the action, "continue", "skip" or "abort", can work for an operation of the kind.
function M.allows(kind, action)
  return (operations[kind] or {})[action] == true
end

local function perform(root, action)
  actions.perform("finish", root, { options = { Action = action } }, function()
    messages.info(done[action])
  end)
end

-- Calls callback(kind) with the operation that is under way; reports it if the action cannot work.
local function with_operation(root, action, callback)
  requests.perform("unfinished", root, {}, function(failure, records)
    if failure then
      return messages.failure(failure)
    end
    for _, record in ipairs(records) do
      if M.allows(record.Kind, action) then
        return callback(record.Kind)
      elseif operations[record.Kind] then
        return messages.error(("a %s cannot be %s"):format(record.Kind, done[action]))
      end
    end
    messages.error(("there is no merge, rebase, cherry-pick or revert to %s"):format(action))
  end)
end

-- action is "continue", "skip" or "abort". Asks before it skips or aborts.
function M.finish(root, action)
  if action == "continue" then
    return perform(root, action)
  end
  with_operation(root, action, function(kind)
    local questions = {
      skip = ("Skip the current commit of the %s? Its changes are left out."):format(kind),
      abort = ("Abort the %s? What was resolved is lost."):format(kind),
    }
    local verb = action:sub(1, 1):upper() .. action:sub(2)
    actions.confirm(questions[action], verb, function()
      perform(root, action)
    end)
  end)
end

return M
