-- Watches the repositories that are in use, so that changes of other programs are seen at once.
-- Without a watch, they are seen when the editor gets the focus.
local M = {}

local config = require("nebgit.config")
local messages = require("nebgit.messages")
local repository = require("nebgit.repository")
local requests = require("nebgit.requests")
local server = require("nebgit.server")

-- By root: the process id of the server that watches it; false if it is not watched, "pending"
-- while the watch is asked for.
local watches = {}
-- The root of each watch of the running server.
local roots = {}

local function start(root)
  if not (config.options.watch.enabled and server.can("watch")) then
    return
  end
  watches[root] = "pending"
  local params = {
    sourceTree = { location = requests.encoded(root) },
    workingTree = config.options.watch.working_tree,
  }
  server.request("sourceControl/watch", params, function(failure, result)
    watches[root] = not failure and server.pid()
    if not failure then
      roots[result.watch] = root
    end
  end)
end

-- Returns whether changes of the repository are reported.
function M.is_active(root)
  return watches[root] and watches[root] == server.pid() or false
end

-- Begins to watch the repository, unless it is watched.
function M.ensure(root)
  if watches[root] ~= "pending" and not M.is_active(root) then
    watches[root] = false
    start(root)
  end
end

-- Reports what may have changed while the editor did not have the focus: everything, or of a
-- watched repository the working tree.
function M.focus_gained()
  for root in pairs(watches) do
    repository.changed(root, M.is_active(root) and { "workingTree" } or nil)
  end
end

server.on_start(function()
  roots = {}
  for root in pairs(watches) do
    watches[root] = false
    start(root)
  end
end)

server.on_notification("sourceControl/didChange", function(params)
  local root = roots[params.watch]
  if root then
    repository.changed(root, params.changes)
  end
end)

server.on_notification("sourceControl/watchEnded", function(params)
  local root = roots[params.watch]
  if root then
    watches[root], roots[params.watch] = false, nil
    if params.class == "system-limit" then
      messages.warn(params.message)
    end
  end
end)

return M
