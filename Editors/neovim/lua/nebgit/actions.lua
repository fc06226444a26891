-- Requests that change a working copy, with the messages for the user and the refresh afterwards.
local M = {}

local messages = require("nebgit.messages")
local questions = require("nebgit.questions")
local repository = require("nebgit.repository")
local requests = require("nebgit.requests")

-- Carries out the request, shows its failure, and reports that everything may have changed. Calls
-- on_success(records), or on_failure(failure) instead of the message, if given.
function M.perform(name, root, details, on_success, on_failure)
  requests.perform(name, root, details, function(failure, records)
    repository.changed(root)
    if failure then
      return (on_failure or messages.failure)(failure, records)
    elseif on_success then
      on_success(records)
    end
  end)
end

-- Asks whether to do something that loses work, and calls callback() if so.
function M.confirm(question, verb, callback)
  questions.select({ "Cancel", verb }, { prompt = question }, function(choice)
    if choice == verb then
      callback()
    end
  end)
end

return M
