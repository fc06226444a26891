-- Changes of other programs are seen without the focus, and credentials are asked for.
local changes = require("nebgit.changes")
local harness = require("harness")
local requests = require("nebgit.requests")
local server = require("nebgit.server")
local signs = require("nebgit.signs")
local watch = require("nebgit.watch")

local tests = {}

-- Opens the file and waits for its watch; returns its buffer.
local function edit_and_watch(path)
  local buffer = harness.edit(path)
  harness.wait(function()
    return changes.state(buffer) and changes.state(buffer).base and watch.is_active(harness.root)
  end, "the watch")
  return buffer
end

local function wait_for_signs(buffer, expected)
  harness.wait(function()
    return vim.deep_equal(expected, signs.placed(buffer))
  end, vim.inspect(expected))
end

function tests.SignsFollowAStagedFile()
  harness.commit({ file = "1\n" })
  local buffer = edit_and_watch("file")
  vim.api.nvim_buf_set_lines(buffer, 0, 1, true, { "one" })
  vim.cmd("silent write")
  wait_for_signs(buffer, { "change" })
  harness.git("add", "file")
  wait_for_signs(buffer, {})
end

function tests.StatusAndLogFollowACommit()
  harness.commit({ file = "1\n" }, "First")
  edit_and_watch("file")
  vim.cmd("NEBGit log")
  harness.go_to("First")
  harness.commit({ file = "1\n" }, "Second")
  harness.go_to("Second")
  vim.cmd("NEBGit status")
  harness.go_to("Branch: main")
  harness.git("checkout", "--quiet", "-b", "topic")
  harness.go_to("Branch: topic")
end

function tests.FileIsReadAgainAfterACheckout()
  harness.commit({ file = "1\n" })
  harness.git("checkout", "--quiet", "-b", "topic")
  harness.commit({ file = "2\n22\n" })
  local buffer = edit_and_watch("file")
  harness.equal({ "2", "22" }, harness.lines(buffer))
  harness.git("checkout", "--quiet", "main")
  harness.wait(function()
    return vim.deep_equal({ "1" }, harness.lines(buffer))
  end, "the file of the branch main")
  wait_for_signs(buffer, {})
end

function tests.StatusShowsWhatChangedBeforeTheWatchBegan()
  harness.commit({ file = "1\n" })
  local request, begin_watch = server.request, nil
  server.request = function(method, ...)
    local arguments = { ... }
    if method ~= "sourceControl/watch" then
      return request(method, ...)
    end
    begin_watch = function()
      request(method, unpack(arguments))
    end
  end
  harness.open_status()
  server.request = request
  harness.write("new", "x\n")
  begin_watch()
  harness.go_to("Untracked (1)")
end

function tests.WatchBeginsAgainAfterACrash()
  harness.commit({ file = "1\n" })
  local buffer = edit_and_watch("file")
  vim.loop.kill(server.pid(), "sigkill")
  harness.wait_for_message("ended unexpectedly")
  vim.cmd("doautocmd FocusGained")
  harness.wait(function()
    return watch.is_active(harness.root)
  end, "the watch")
  vim.api.nvim_buf_set_lines(buffer, 0, 1, true, { "one" })
  vim.cmd("silent write")
  wait_for_signs(buffer, { "change" })
  harness.git("add", "file")
  wait_for_signs(buffer, {})
end

function tests.StatusOfAMovedRepositorySaysSo()
  harness.commit({ file = "1\n" })
  harness.open_status()
  harness.wait(function()
    return watch.is_active(harness.root)
  end, "the watch")
  vim.fn.rename(harness.root .. "/.git", harness.root .. "/moved")
  harness.go_to("The working copy could not be read; R tries again")
  vim.fn.rename(harness.root .. "/moved", harness.root .. "/.git")
  harness.press("R")
  harness.go_to("Branch: main")
end

function tests.WatchCanBeSwitchedOff()
  harness.configure({ watch = { enabled = false } })
  harness.commit({ file = "1\n" })
  local buffer = harness.edit("file")
  harness.wait(function()
    return changes.state(buffer) and changes.state(buffer).base
  end)
  harness.equal(false, watch.is_active(harness.root))
end

function tests.WatchEndsWithTheLastBuffer()
  harness.commit({ file = "1\n", other = "2\n" })
  local first = edit_and_watch("file")
  vim.cmd("split")
  local second = edit_and_watch("other")
  vim.cmd("bwipeout " .. first)
  harness.await(vim.schedule)
  harness.equal(true, watch.is_active(harness.root))
  vim.cmd("bdelete " .. second)
  harness.wait(function()
    return not watch.is_active(harness.root)
  end, "the end of the watch")
  local failure = harness.await(function(callback)
    server.request("sourceControl/unwatch", { watch = "1" }, callback)
  end)
  harness.equal(-32602, failure.code)
  edit_and_watch("file")
end

-- The functions of a server in Python that read and send messages.
local framing = [==[
import json, sys
def read():
    length = 0
    while line := sys.stdin.buffer.readline().strip():
        name, _, value = line.partition(b":")
        length = int(value)
    return json.loads(sys.stdin.buffer.read(length) or sys.exit(0))
def send(**message):
    content = json.dumps({"jsonrpc": "2.0", **message}).encode()
    sys.stdout.buffer.write(b"Content-Length: %d\r\n\r\n" % len(content) + content)
    sys.stdout.buffer.flush()
]==]

-- A server that cannot watch working trees and writes what it is asked to a file.
local limited_server = framing .. [==[
while True:
    message = read()
    method = message.get("method")
    if method == "initialize":
        send(id=message["id"], result={"capabilities": {"watch": True}})
    elif method == "sourceControl/watch":
        tree = message["params"]["workingTree"]
        print(tree, file=open(sys.argv[1], "a"))
        if tree:
            send(id=message["id"], error={"code": -32803, "message": "too many folders",
                                          "data": {"class": "system-limit"}})
        else:
            send(id=message["id"], result={"watch": "1"})
    elif method == "exit":
        sys.exit(0)
    elif "id" in message:
        send(id=message["id"], result={"result": [], "error": None})
]==]

function tests.WatchAboveTheLimitOfTheSystemLeavesOutTheWorkingTree()
  local program, log = harness.folder .. "/server.py", harness.folder .. "/log"
  harness.write(program, limited_server)
  local command = { "python3", program, log }
  require("nebgit").setup({ command = command, watch = { working_tree = true } })
  harness.commit({ file = "1\n", other = "2\n" })
  edit_and_watch("file")
  edit_and_watch("other")
  harness.equal({ "True", "False" }, vim.fn.readfile(log))
  local _, count = harness.messages():gsub("too many folders", "")
  harness.equal(1, count)
end

-- A server that asks a question for each request of the status, and returns the reply as its head.
local asking_server = framing .. [==[
def withdraw():
    for question, request in waiting.items():
        send(method="$/cancelRequest", params={"id": question})
        send(id=request, result={"result": [{"withdrawn": True}], "error": None})
    waiting.clear()
kind = sys.argv[1]
waiting = {}
while True:
    message = read()
    method = message.get("method")
    if method == "initialize":
        send(id=message["id"], result={"capabilities": {"credentials": True}})
    elif method == "sourceControl/perform":
        question = "q%d" % message["id"]
        waiting[question] = message["id"]
        send(id=question, method="sourceControl/credentials",
             params={"kind": kind, "prompt": "Password: ", "url": None, "user": None})
        if kind == "other":
            withdraw()
    elif method == "test/withdraw":
        withdraw()
    elif method == "shutdown":
        send(id=message["id"], result=None)
    elif method == "exit":
        sys.exit(0)
    elif message.get("id") in waiting:
        send(id=waiting[message["id"]], result={"result": [{"reply": message.get("result")}],
                                                "error": None})
]==]

local function ask(kind)
  local path = harness.folder .. "/server.py"
  vim.fn.writefile(vim.split(asking_server, "\n"), path)
  require("nebgit").setup({ command = { "python3", path, kind } })
  local _, records = harness.await(function(callback)
    requests.perform("state", harness.root, {}, callback)
  end)
  return records[1]
end

function tests.SecretIsAskedFor()
  vim.api.nvim_input("s3cret<CR>")
  harness.equal({ reply = { value = "s3cret" } }, ask("password"))
end

function tests.SecretIsDeclined()
  vim.api.nvim_input("<Esc>")
  harness.equal({}, ask("password"))
end

function tests.NameAndHostKeyAreAskedForOpenly()
  harness.answers = { "ann" }
  harness.equal({ reply = { value = "ann" } }, ask("name"))
  server.restart()
  harness.answers = { "Yes" }
  harness.equal({ reply = { value = "yes" } }, ask("hostKey"))
end

function tests.NextQuestionIsAskedAfterOneFailed()
  vim.ui.input = function()
    error("out of order")
  end
  harness.equal({}, ask("name"))
  harness.wait_for_message("out of order")
  vim.ui.input = function(_, callback)
    callback("ann")
  end
  harness.equal({ reply = { value = "ann" } }, ask("name"))
end

function tests.QuestionsOfAnEndedServerAreNotAsked()
  local answer, asked
  vim.ui.input = function(_, callback)
    asked, answer = (asked or 0) + 1, callback
  end
  local function perform(count)
    for _ = 1, count do
      requests.perform("state", harness.root, {}, function() end)
    end
    harness.wait(function()
      return answer
    end, "a question")
  end
  local path = harness.folder .. "/server.py"
  harness.write(path, asking_server)
  require("nebgit").setup({ command = { "python3", path, "name" } })
  perform(2)
  local first = answer
  vim.loop.kill(server.pid(), "sigkill")
  harness.wait_for_message("ended unexpectedly")
  answer = nil
  perform(1)
  harness.equal(2, asked)
  first("late")
  answer("ann")
  harness.await(vim.schedule)
  harness.equal(2, asked)
end

function tests.QuestionIsWithdrawnBeforeItIsShown()
  harness.equal({ withdrawn = true }, ask("other"))
end

function tests.QuestionIsWithdrawnWhileItIsShown()
  local timer = vim.loop.new_timer()
  timer:start(0, 5, vim.schedule_wrap(function()
    if not timer:is_closing() and vim.fn.mode() == "c" then
      timer:close()
      server.request("test/withdraw", {}, function() end)
    end
  end))
  harness.equal({ withdrawn = true }, ask("password"))
  harness.wait(function()
    return vim.fn.mode() ~= "c"
  end, "the end of the question")
end

return tests
