-- The command :NEBGit and its subcommands. Modules are loaded when a subcommand needs them.
local M = {}

local messages = require("nebgit.messages")

-- Each subcommand: `run(arguments, context)`, where context has `range` ({first, last} or nil), and
-- `accepted`, its arguments: the possible values of the only one, or how many there may be.
M.table = {}

-- Adds a subcommand, by default one without arguments.
local function add(name, run, accepted)
  M.table[name] = { run = run, accepted = accepted or 0 }
end

-- Adds a subcommand that calls a function of a module with the range of lines.
local function add_for_lines(name, module, method)
  add(name, function(_, context)
    require(module)[method](context.range)
  end)
end

add("next_hunk", function()
  require("nebgit.hunk_commands").go(1)
end)
add("previous_hunk", function()
  require("nebgit.hunk_commands").go(-1)
end)
add("preview_hunk", function()
  require("nebgit.hunk_commands").preview()
end)
add_for_lines("stage_hunk", "nebgit.hunk_commands", "stage")
add_for_lines("unstage_hunk", "nebgit.hunk_commands", "unstage")
add_for_lines("reset_hunk", "nebgit.hunk_commands", "reset")
add("blame_line", function()
  require("nebgit.blame_line").toggle()
end)
add("blame", function()
  require("nebgit.blame_file").open()
end)

-- Adds a subcommand that calls run(root, arguments, path) for the working copy of the current
-- buffer.
local function add_for_root(name, run, accepted)
  add(name, function(arguments)
    require("nebgit.repository").find_current(function(root, path)
      if root then
        run(root, arguments, path)
      else
        messages.error("this is not in a working copy")
      end
    end)
  end, accepted)
end

add_for_root("show", function(root, arguments)
  require("nebgit.commit_view").open(root, arguments[1] or "HEAD")
end, 1)
add_for_root("status", function(root)
  require("nebgit.status.window").open(root)
end)
add_for_root("trust", function(root)
  require("nebgit.trust").trust(root)
end)
add_for_root("log", function(root, arguments, path)
  if arguments[1] == "file" and path == "" then
    return messages.error("the buffer has no file")
  end
  require("nebgit.log.window").open(root, arguments[1] == "file" and path or nil)
end, { "file" })
add_for_root("commit", function(root, arguments)
  require("nebgit.commit_message").open(root, { amend = arguments[1] == "amend" or nil })
end, { "amend" })
add_for_root("push", function(root, arguments)
  require("nebgit.remotes").push(root, arguments[1] == "force")
end, { "force" })
add_for_root("pull", function(root)
  require("nebgit.remotes").pull(root)
end)
add_for_root("fetch", function(root)
  require("nebgit.remotes").fetch(root)
end)
add_for_root("stash", function(root)
  require("nebgit.stashes").menu(root)
end)
add_for_root("switch", function(root, arguments)
  require("nebgit.branches").switch(root, arguments[1])
end, 1)
add_for_root("merge", function(root, arguments)
  if arguments[1] then
    require("nebgit.branches").merge(root, arguments[1])
  else
    messages.error("name the branch to merge")
  end
end, 1)
add("clone", function(arguments)
  local location, folder = arguments[1], arguments[2]
  if not location then
    return messages.error("name the location of the repository to clone")
  end
  folder = folder or location:gsub("/+$", ""):gsub("%.git$", ""):match("[^/:]*$")
  require("nebgit.remotes").clone(location, (vim.fn.fnamemodify(folder, ":p"):gsub("/+$", "")))
end, 2)
for _, action in ipairs({ "continue", "skip", "abort" }) do
  add_for_root(action, function(root)
    require("nebgit.operations").finish(root, action)
  end)
end
for _, name in ipairs({ "stage", "unstage" }) do
  add_for_root(name, function(root, _, path)
    if path == "" then
      messages.error("the buffer has no file")
    else
      require("nebgit.actions").perform(name, root, { files = { path } })
    end
  end)
end

add("restart", function()
  require("nebgit.server").restart()
end)

-- Returns the completions of the last argument of a command line.
function M.complete(lead, line)
  local arguments = vim.split(vim.trim(line:match("NEBGit!?%s+(.*)$") or ""), "%s+")
  local candidates
  if #arguments > 1 or (lead == "" and arguments[1] ~= "") then
    local accepted = (M.table[arguments[1]] or {}).accepted
    candidates = type(accepted) == "table" and accepted or {}
  else
    candidates = vim.tbl_keys(M.table)
    table.sort(candidates)
  end
  return vim.tbl_filter(function(candidate)
    return vim.startswith(candidate, lead)
  end, candidates)
end

-- Returns the first of the arguments that the subcommand does not accept, or nil.
local function unexpected_argument(command, arguments)
  local count = command.accepted
  if type(command.accepted) == "table" then
    count = vim.tbl_contains(command.accepted, arguments[1]) and 1 or 0
  end
  return arguments[count + 1]
end

-- Runs a command line; context is the argument of nvim_create_user_command()'s function.
function M.run(context)
  local arguments = vim.deepcopy(context.fargs)
  local name = table.remove(arguments, 1) or "status"
  local command = M.table[name]
  if not command then
    messages.error(("'%s' is not a command; see :help nebgit-commands"):format(name))
    return
  end
  local unexpected = unexpected_argument(command, arguments)
  if unexpected then
    local text = "unexpected argument '%s'; see :help NEBGit-%s"
    messages.error(text:format(unexpected, name))
    return
  end
  local range = context.range > 0 and { context.line1, context.line2 } or nil
  command.run(arguments, { range = range })
end

return M
