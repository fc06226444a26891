-- :checkhealth nebgit
local M = {}

local config = require("nebgit.config")
local server = require("nebgit.server")

-- The functions have other names since Neovim 0.10.
local health = vim.health or require("health")
local start = health.start or health.report_start
local ok = health.ok or health.report_ok
local warn = health.warn or health.report_warn
local fail = health.error or health.report_error

local oldest_contract = 3

local function check_editor()
  if vim.fn.has("nvim-0.7") == 1 then
    ok("Neovim is 0.7 or newer")
  else
    fail("Neovim is older than 0.7", { "Install Neovim 0.7 or newer." })
  end
end

local function check_program()
  local program = config.options.command[1]
  local path = vim.fn.exepath(program)
  if path == "" then
    fail(("'%s' was not found"):format(program), {
      "Install the package nebgit, or set 'command' in setup(), see :help nebgit-command.",
    })
    return false
  end
  ok(("'%s' is %s"):format(program, path))
  return true
end

local function report(information)
  local name = information.serverInfo or {}
  ok(("the server runs: %s %s"):format(name.name or "nebsc", name.version or ""))
  if (information.contractVersion or 0) < oldest_contract then
    fail("the server is too old for this plug-in", { "Install both from the same version." })
  end
  if information.gitVersion then
    ok(information.gitVersion)
  else
    fail("the server finds no git", { "Install git, and make sure that it is in $PATH." })
  end
  local optional = {
    watch = "changes by other programs are seen when the editor gets the focus",
    background = "status that is read by itself may hold a lock while a git in a terminal needs it",
    credentials = "passwords are not asked for; use a credential helper",
  }
  for capability, consequence in pairs(optional) do
    if server.can(capability) then
      ok("the server supports " .. capability)
    else
      warn(("the server does not support %s: %s"):format(capability, consequence))
    end
  end
end

function M.check()
  start("nebgit")
  check_editor()
  if not check_program() then
    return
  end
  local failure, is_done
  server.request("sourceControl/plan", { type = 15 }, function(problem)
    failure, is_done = problem, true
  end)
  vim.wait(10000, function()
    return is_done
  end, 10)
  if not is_done then
    fail("the server does not respond", { "Run ':NEBGit restart'." })
  elseif failure then
    fail(failure.message)
  else
    report(server.information())
  end
end

return M
