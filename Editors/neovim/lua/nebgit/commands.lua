-- The command :NEBGit and its subcommands. Modules are loaded when a subcommand needs them.
local M = {}

local messages = require("nebgit.messages")

-- Each subcommand: `run(arguments, context)`, where context has `range` ({first, last} or nil), and
-- `values`, the possible values of its argument.
M.table = {}

-- Adds subcommands.
local function add(name, run, values)
  M.table[name] = { run = run, values = values }
end

add("restart", function()
  require("nebgit.server").restart()
end)

-- Returns the completions of the last argument of a command line.
function M.complete(lead, line)
  local arguments = vim.split(vim.trim(line:match("NEBGit!?%s+(.*)$") or ""), "%s+")
  local candidates
  if #arguments > 1 or (lead == "" and arguments[1] ~= "") then
    candidates = (M.table[arguments[1]] or {}).values or {}
  else
    candidates = vim.tbl_keys(M.table)
    table.sort(candidates)
  end
  return vim.tbl_filter(function(candidate)
    return vim.startswith(candidate, lead)
  end, candidates)
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
  local range = context.range > 0 and { context.line1, context.line2 } or nil
  command.run(arguments, { range = range })
end

return M
