-- Continues, skips or aborts an unfinished merge, rebase, cherry-pick or revert.
local M = {}

local actions = require("nebgit.actions")
local messages = require("nebgit.messages")

local done = { continue = "continued", skip = "skipped", abort = "aborted" }

local function perform(root, action)
  actions.perform("finish", root, { options = { Action = action } }, function()
    messages.info(done[action])
  end)
end

-- action is "continue", "skip" or "abort". Asks before it skips or aborts.
function M.finish(root, action)
  if action == "continue" then
    return perform(root, action)
  end
  local questions = {
    skip = "Skip the current commit? Its changes are left out.",
    abort = "Abort? What was resolved is lost.",
  }
  local verb = action:sub(1, 1):upper() .. action:sub(2)
  actions.confirm(questions[action], verb, function()
    perform(root, action)
  end)
end

return M
