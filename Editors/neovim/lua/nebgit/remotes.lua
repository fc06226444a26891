-- Push, pull and fetch.
local M = {}

local actions = require("nebgit.actions")
local config = require("nebgit.config")
local messages = require("nebgit.messages")
local questions = require("nebgit.questions")
local requests = require("nebgit.requests")

-- Calls callback(name) with the remote: the only one, or the one that the user chooses.
local function choose_remote(root, prompt, callback)
  requests.perform("list_remotes", root, {}, function(failure, records)
    local names = {}
    for _, record in ipairs(records) do
      if record.RemoteName and record.Type ~= "push" and not record.UsesGitSVN then
        names[#names + 1] = record.RemoteName
      end
    end
    if failure then
      messages.failure(failure)
    elseif #names == 0 then
      messages.error("the repository has no remote")
    elseif #names == 1 then
      callback(names[1])
    else
      questions.select(names, { prompt = prompt }, function(name)
        if name then
          callback(name)
        end
      end)
    end
  end)
end

-- Returns a sentence for the references that were pushed, and below it the lines of the remote.
local function describe(records)
  local pushed, lines = {}, {}
  for _, record in ipairs(records) do
    if record.Name then
      local name = record.Name:gsub("^refs/heads/", "")
      pushed[#pushed + 1] = ("%s: %s"):format(name, record.State)
    end
    for _, line in ipairs(record.RemoteLines or {}) do
      lines[#lines + 1] = "remote: " .. line
    end
  end
  table.insert(lines, 1, "pushed " .. table.concat(pushed, ", "))
  return table.concat(lines, "\n")
end

local perform_push

-- Asks whether to push the current branch to a remote for the first time.
local function push_new_branch(root)
  local options = { UntrackedFiles = "no" }
  requests.perform("state", root, { options = options }, function(failure, records)
    local branch = records[1] and records[1].Name
    if failure or not branch then
      return messages.failure(failure or { message = "no branch is checked out" })
    end
    choose_remote(root, ("Push '%s' to:"):format(branch), function(remote)
      local question = "Push the new branch '%s' to '%s' as its upstream branch?"
      actions.confirm(question:format(branch, remote), "Push", function()
        perform_push(root, { RemoteName = remote, Branch = branch, SetUpstream = true })
      end)
    end)
  end)
end

function perform_push(root, options)
  messages.info("pushing …")
  local details = { authenticates = true, options = options }
  actions.perform("publish", root, details, function(records)
    messages.info(describe(records))
  end, function(failure)
    local is_new = failure.class == "no-upstream" or failure.class == "no-push-destination"
    if is_new and not options.Branch then
      return push_new_branch(root)
    end
    messages.failure(failure)
  end)
end

-- Pushes the branch to its upstream branch; asks if it has none. With is_forced, replaces commits
-- of the remote that are known here, after a question.
function M.push(root, is_forced)
  if not is_forced then
    return perform_push(root, {})
  end
  local question = "Replace the commits of the remote branch by those of this one?"
  actions.confirm(question, "Force", function()
    perform_push(root, { ForceWithLease = true })
  end)
end

-- Returns the strategy of git's settings, see git-config(1), pull.ff, pull.rebase and
-- branch.NAME.rebase: records of which the last one of a name counts. Only fast-forward counts
-- before a rebase.
local function strategy_of(records, branch)
  local values = {}
  for _, record in ipairs(records) do
    if record.Name then
      values[record.Name] = record.Value or "true"
    end
  end
  local rebase = values["branch." .. branch .. ".rebase"] or values["pull.rebase"] or "false"
  local is_off = vim.tbl_contains({ "false", "no", "off", "0", "" }, rebase:lower())
  return values["pull.ff"] == "only" and "fast-forward" or is_off and "merge" or "rebase"
end

-- Calls callback(strategy) with the strategy of the settings of the editor or of git.
local function choose_strategy(root, callback)
  if config.options.pull then
    return callback(config.options.pull)
  end
  requests.perform("current_branch", root, {}, function(_, branches)
    local branch = branches[1] and branches[1].Name or ""
    local names = { "pull.ff", "pull.rebase", "branch." .. branch .. ".rebase" }
    local options = { SettingNames = names }
    requests.perform("settings", root, { options = options }, function(failure, records)
      if failure then
        return messages.failure(failure)
      end
      callback(strategy_of(records, branch))
    end)
  end)
end

-- Fetches the upstream branch and integrates it.
function M.pull(root)
  choose_strategy(root, function(strategy)
    messages.info(("pulling (%s) …"):format(strategy))
    local details = { authenticates = true, options = { Strategy = strategy } }
    actions.perform("integrate", root, details, function(records)
      local head = records[1] or {}
      messages.info(head.OldObjectID == head.ObjectID and "already up to date" or "pulled")
    end)
  end)
end

-- Fetches from the remote.
function M.fetch(root)
  choose_remote(root, "Fetch from:", function(remote)
    messages.info(("fetching from '%s' …"):format(remote))
    local details = {
      authenticates = true,
      remote = vim.empty_dict(),
      options = { RemoteName = remote },
    }
    actions.perform("fetch", root, details, function()
      messages.info(("fetched from '%s'"):format(remote))
    end)
  end)
end

-- Clones the repository at the location into the folder, which must be an absolute path.
function M.clone(location, folder)
  messages.info(("cloning into '%s' …"):format(folder))
  local details = { authenticates = true, destination = folder }
  actions.perform("clone", location, details, function()
    messages.info(("cloned into '%s'"):format(folder))
  end)
end

return M
