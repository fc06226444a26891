-- The server's process: start, crash, cancellation, partial results, pages, and the editor's exit.
local harness = require("harness")
local requests = require("nebgit.requests")
local server = require("nebgit.server")

local uv = vim.loop
local tests = {}

local function state(details)
  return harness.await(function(callback)
    requests.perform("state", harness.root, details or {}, callback)
  end)
end

local function kill_server()
  local pid = server.pid()
  uv.kill(pid, "sigkill")
  harness.wait(function()
    return server.pid() ~= pid
  end, "the end of the server")
end

local function use_program(lines)
  local path = harness.folder .. "/program"
  vim.fn.writefile(lines, path)
  uv.fs_chmod(path, 448)
  require("nebgit").setup({ command = { path } })
end

function tests.RequestsAreAnswered()
  harness.write("new.txt", "x\n")
  local failure, records = state()
  harness.equal(nil, failure)
  harness.equal({ Kind = "head", Name = "main" }, records[1])
  harness.equal({ Kind = "untracked", Path = "new.txt" }, records[2])
end

function tests.OneProcessForAllRequests()
  local finished = 0
  for _ = 1, 20 do
    requests.perform("state", harness.root, {}, function()
      finished = finished + 1
    end)
  end
  local pid = server.pid()
  harness.wait(function()
    return finished == 20
  end)
  harness.equal(pid, server.pid())
end

function tests.FailureHasMessageAndAdvice()
  local failure = harness.await(function(callback)
    requests.perform("state", harness.folder, {}, callback)
  end)
  harness.equal("not-a-repository", failure.class)
  harness.contains("not", failure.message)
  harness.contains("git", failure.advice)
end

function tests.MissingProgramIsNamed()
  require("nebgit").setup({ command = { "no-such-nebsc" } })
  local failure = state()
  harness.equal("server", failure.class)
  harness.contains("cannot start 'no-such-nebsc'", failure.message)
end

function tests.CrashIsReportedAndTheNextRequestStartsAgain()
  state()
  kill_server()
  harness.wait_for_message("ended unexpectedly (signal 9)")
  harness.equal(nil, (state()))
end

-- Starts a commit whose hook does not end before the folder is removed, and waits until it runs.
-- Returns a table that gets the failure, and the function that cancels the commit.
local function start_endless_commit()
  harness.write_program(".git/hooks/pre-commit", table.concat({
    "#!/bin/sh",
    "touch ../started",
    "while [ -e ../started ]; do sleep 0.05; done",
  }, "\n"))
  local result = {}
  local options = { Message = "Endless", AllowEmptyCommit = true }
  local cancel = requests.perform("commit", harness.root, { options = options }, function(failure)
    result.failure = failure
  end)
  harness.wait(function()
    return uv.fs_stat(harness.folder .. "/started")
  end, "the start of the hook")
  return result, cancel
end

function tests.CrashFailsWaitingRequests()
  local result = start_endless_commit()
  kill_server()
  harness.wait(function()
    return result.failure
  end)
  harness.equal("server", result.failure.class)
end

function tests.RepeatedCrashesEndTheAttempts()
  use_program({ "#!/bin/sh", "echo 'out of order' >&2", "exit 3" })
  for _ = 1, 3 do
    harness.contains("exit status 3", state().message)
  end
  harness.contains("out of order", harness.messages())
  harness.contains("ended repeatedly", state().message)
  harness.configure({})
  vim.cmd("NEBGit restart")
  harness.equal(nil, (state()))
end

function tests.OutputThatIsNoMessageEndsTheServer()
  use_program({ "#!/bin/sh", "printf 'hello\\r\\n\\r\\n'", "exec sleep 1000" })
  harness.equal("server", state().class)
  harness.contains("the header of a message is invalid: hello", harness.messages())
  server.restart()
end

function tests.CancelledRequestEndsGit()
  local result, cancel = start_endless_commit()
  cancel()
  harness.wait(function()
    return result.failure
  end)
  harness.equal("cancelled", result.failure.class)
  cancel()
end

function tests.RequestCancelledBeforeTheServerStarted()
  local failures = {}
  for index = 1, 2 do
    local cancel = requests.perform("state", harness.root, {}, function(failure)
      failures[index] = failure or false
    end)
    if index == 1 then
      cancel()
    end
  end
  harness.wait(function()
    return #failures == 2
  end)
  harness.equal("cancelled", failures[1].class)
  harness.equal(false, failures[2])
end

function tests.RecordsArriveWhileGitRuns()
  for number = 1, 1500 do
    harness.write(("f%04d"):format(number), "")
  end
  local received, batches = {}, 0
  local failure, rest = state({
    records = function(records)
      batches = batches + 1
      vim.list_extend(received, records)
    end,
  })
  harness.equal(nil, failure)
  harness.equal({}, rest)
  harness.equal(1501, #received)
  harness.equal("f1500", received[1501].Path)
  assert(batches >= 3)
end

function tests.PagesAreReadOneByOne()
  for number = 1, 5 do
    harness.commit({}, "Commit " .. number)
  end
  local pages = requests.pages("history", harness.root, {}, 2)
  local subjects = {}
  for _ = 1, 3 do
    local failure, records = harness.await(function(callback)
      pages:next(callback)
    end)
    harness.equal(nil, failure)
    for _, record in ipairs(records) do
      table.insert(subjects, record.Subject)
    end
  end
  harness.equal({ "Commit 5", "Commit 4", "Commit 3", "Commit 2", "Commit 1" }, subjects)
  pages:close()
end

function tests.ClosedPagesEndTheirGit()
  for number = 1, 5 do
    harness.commit({}, "Commit " .. number)
  end
  local pages = requests.pages("history", harness.root, {}, 1)
  harness.await(function(callback)
    pages:next(callback)
  end)
  local cursor = pages.cursor
  pages:close()
  local failure = harness.await(function(callback)
    server.request("sourceControl/next", { cursor = cursor }, callback)
  end)
  harness.contains("cursor", failure.message)
end

function tests.NamesAreBytes()
  local names = { "a b", 'quote"', "line\nend", "b\228r", "-dash", "ü", "tab\t", "*" }
  for _, name in ipairs(names) do
    harness.write(name, "x\n")
  end
  local failure, records = harness.await(function(callback)
    requests.perform("stage", harness.root, { files = names }, function()
      requests.perform("state", harness.root, {}, callback)
    end)
  end)
  harness.equal(nil, failure)
  table.sort(names)
  local staged = {}
  for index = 2, #records do
    harness.equal("added", records[index].IndexState)
    table.insert(staged, records[index].Path)
  end
  table.sort(staged)
  harness.equal(names, staged)
end

-- Runs another editor with the commands, which quits at the end, and returns its messages.
local function run_editor(commands)
  local modules = vim.api.nvim_get_runtime_file("lua/nebgit/", false)[1]
  local plug_in = vim.fn.fnamemodify(modules, ":h:h:h")
  local arguments = { vim.v.progpath, "--headless", "-u", "NONE", "-i", "NONE", "-n" }
  vim.list_extend(arguments, { "--cmd", "set runtimepath^=" .. vim.fn.fnameescape(plug_in) })
  local setup = "runtime plugin/nebgit.lua | lua require('nebgit').setup({ command = { %s } })"
  vim.list_extend(arguments, { "-c", setup:format(vim.inspect(vim.env.NEBSC or "nebsc")) })
  for _, command in ipairs(commands) do
    vim.list_extend(arguments, { "-c", command })
  end
  return harness.run(arguments)
end

function tests.CrashIsReportedOnce()
  harness.commit({ file = "1\n" })
  harness.open_status()
  local pid = server.pid()
  uv.kill(pid, "sigstop")
  harness.press("R")
  uv.kill(pid, "sigkill")
  harness.go_to("The working copy could not be read")
  local _, count = harness.messages():gsub("ended unexpectedly", "")
  harness.equal(1, count)
end

function tests.ExitEndsTheServer()
  local output = run_editor({
    "lua require('nebgit.server').request('sourceControl/plan', { type = 15 }, function() end)",
    "lua vim.wait(60000, require('nebgit.server').information, 5)",
    "lua io.stderr:write(require('nebgit.server').pid())",
    "qall!",
  })
  local pid = tonumber(output:match("%d+"))
  assert(pid, output)
  harness.wait(function()
    return uv.kill(pid, 0) ~= 0
  end, "the end of the server")
end

function tests.ExitWaitsForAChange()
  harness.write_program(".git/hooks/pre-commit", "#!/bin/sh\nsleep 0.2\n")
  local commit = "lua require('nebgit.requests').perform('commit', %s, "
    .. "{ options = { Message = 'At the end', AllowEmptyCommit = true } }, function() end)"
  run_editor({ commit:format(vim.inspect(harness.root)), "qall!" })
  harness.equal("At the end", harness.git("log", "-1", "--format=%s"))
end

function tests.HealthIsReported()
  vim.cmd("checkhealth nebgit")
  local report = table.concat(harness.lines(), "\n")
  harness.contains("the server runs: nebsc", report)
  harness.contains("git version", report)
  harness.equal(nil, report:find("ERROR", 1, true))
end

function tests.HealthNamesTheMissingProgram()
  require("nebgit").setup({ command = { "no-such-nebsc" } })
  vim.cmd("checkhealth nebgit")
  harness.contains("'no-such-nebsc' was not found", table.concat(harness.lines(), "\n"))
end

function tests.InvalidSettingsAreNamed()
  local function problem(options)
    return select(2, pcall(require("nebgit").setup, options))
  end
  harness.contains("'sign' is not a setting", problem({ sign = {} }))
  harness.contains("'signs.delay' must be a number", problem({ signs = { delay = "x" } }))
  harness.contains("'keys.jump' is not a setting", problem({ keys = { jump = "x" } }))
end

function tests.UnknownCommandIsNamed()
  vim.cmd("NEBGit stauts")
  harness.contains("'stauts' is not a command", harness.messages())
end

function tests.UnexpectedArgumentIsNamed()
  vim.cmd("NEBGit push origin")
  harness.contains("unexpected argument 'origin'; see :help NEBGit-push", harness.messages())
  vim.cmd("NEBGit commit amend now")
  harness.contains("unexpected argument 'now'; see :help NEBGit-commit", harness.messages())
  vim.cmd("NEBGit show HEAD main")
  harness.contains("unexpected argument 'main'; see :help NEBGit-show", harness.messages())
end

return tests
