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

-- Whether the system cannot watch the folders of some working tree, by its root.
local is_limited = {}

-- Ends the watches of repositories that no buffer needs.
local function prune()
  local needed = {}
  for _, buffer in ipairs(vim.api.nvim_list_bufs()) do
    needed[vim.b[buffer].nebgit_root or ""] = true
  end
  for id, root in pairs(roots) do
    if not needed[root] then
      roots[id] = nil
      if M.is_active(root) then
        server.request("sourceControl/unwatch", { watch = id }, function() end)
      end
    end
  end
  for root, state in pairs(watches) do
    if state ~= "pending" and not needed[root] then
      watches[root] = nil
    end
  end
end

-- Notes that the system cannot watch the working tree; shows the message once.
local function limit(root, message)
  if not next(is_limited) then
    local advice = "Changes of files by other programs are seen when Neovim gets the focus."
    messages.warn(message .. "\n" .. advice)
  end
  is_limited[root] = true
end

local function start(root)
  if not (config.options.watch.enabled and server.can("watch")) then
    return
  end
  watches[root] = "pending"
  local params = {
    sourceTree = { location = requests.encoded(root) },
    workingTree = config.options.watch.working_tree and not is_limited[root],
  }
  server.request("sourceControl/watch", params, function(failure, result)
    watches[root] = not failure and server.pid()
    if not failure then
      roots[result.watch] = root
      prune()
      if M.is_active(root) then
        -- What is shown was read before the watch began.
        repository.changed(root)
      end
    elseif params.workingTree and (failure.outcome or {}).class == "system-limit" then
      limit(root, failure.message)
      start(root)
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

-- Ends the watches that are not needed when the buffer that is being deleted is gone.
function M.buffer_deleted()
  vim.schedule(prune)
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
    if params.class == "system-limit" and not is_limited[root] then
      limit(root, params.message)
      start(root)
    else
      repository.changed(root)
    end
  end
end)

return M
