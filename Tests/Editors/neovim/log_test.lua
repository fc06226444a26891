-- The log window, its graph and pages, and the status line.
local graph = require("nebgit.log.graph")
local harness = require("harness")
local requests = require("nebgit.requests")
local server = require("nebgit.server")
local watch = require("nebgit.watch")

local tests = {}

-- Draws a graph of commits, each a text "ID PARENT…".
local function draw(commits)
  local drawing, lines = graph.new(), {}
  for _, commit in ipairs(commits) do
    local words = vim.split(commit, " ")
    local before, lanes, after = drawing:add(words[1], vim.list_slice(words, 2))
    vim.list_extend(lines, before)
    lines[#lines + 1] = lanes .. " " .. words[1]
    vim.list_extend(lines, after)
  end
  return lines
end

local function open_log(arguments)
  harness.enter()
  vim.cmd("NEBGit log " .. (arguments or ""))
end

function tests.GraphOfALine()
  harness.equal({ "* c", "* b", "* a" }, draw({ "c b", "b a", "a" }))
end

function tests.GraphOfAMerge()
  harness.equal({
    "* m",
    "├─╮",
    "* │ b",
    "│ * c",
    "├─╯",
    "* a",
  }, draw({ "m b c", "b a", "c a", "a" }))
end

function tests.GraphOfIndependentBranches()
  harness.equal({ "* b", "│ * d", "* │ a", "  * c" }, draw({ "b a", "d c", "a", "c" }))
end

function tests.GraphOfAnOctopus()
  harness.equal({
    "* m",
    "├─┬─╮",
    "* │ │ a",
    "│ * │ b",
    "│ │ * c",
    "├─┴─╯",
    "* r",
  }, draw({ "m a b c", "a r", "b r", "c r", "r" }))
end

function tests.GraphOfAMergeWithALaneOnTheLeft()
  harness.equal({
    "* x",
    "│ * m",
    "├─┤",
    "* │ a",
    "  * b",
  }, draw({ "x a", "m b a", "a", "b" }))
end

function tests.GraphWithAParentBeforeItsChild()
  harness.equal({ "* m", "├─╮", "* │ a", "  * b" }, draw({ "m a b", "a", "b a" }))
end

function tests.CommitsWithGraphAndReferences()
  harness.commit({ file = "1\n" }, "First")
  harness.git("tag", "v1")
  harness.git("checkout", "--quiet", "-b", "side")
  vim.env.GIT_COMMITTER_DATE = "2026-03-04T05:06:08 +0000"
  harness.commit({ side = "s\n" }, "Side")
  harness.git("checkout", "--quiet", "main")
  harness.git("merge", "--quiet", "--no-ff", "--message", "Merge", "side")
  open_log()
  harness.go_to("First")
  vim.env.GIT_COMMITTER_DATE = "2026-03-04T05:06:07 +0000"
  local function id(name)
    return harness.git("rev-parse", name):sub(1, 8)
  end
  harness.equal({
    ("* %s (HEAD, main) Merge  Ann Example, 2026-03-04"):format(id("main")),
    "├─╮",
    ("│ * %s (side) Side  Ann Example, 2026-03-04"):format(id("side")),
    "├─╯",
    ("* %s (tag: v1) First  Ann Example, 2026-03-04"):format(id("v1")),
  }, harness.lines())
  harness.press("<CR>")
  harness.go_to("+1")
  harness.equal("commit " .. harness.git("rev-parse", "v1"), harness.lines()[1])
end

-- Opens the log of "Commit 1000", the newest one, to "Commit 1" in pages of 100, and waits for the
-- first page. The repository is watched before, so that the log is not read again then.
local function open_long_log()
  local input = {}
  for number = 1, 1000 do
    vim.list_extend(input, {
      "commit refs/heads/main",
      ("committer Ann Example <ann@example.org> %d +0000"):format(1700000000 + number),
      "data <<END", "Commit " .. number, "END", "",
    })
  end
  harness.run({ "git", "-C", harness.root, "fast-import", "--quiet" }, table.concat(input, "\n"))
  harness.configure({ log = { page_size = 100 } })
  harness.edit("file")
  harness.wait(function()
    return watch.is_active(harness.root)
  end, "the watch")
  open_log()
  harness.go_to("Commit 1000")
  harness.wait(function()
    return #harness.lines() >= 100
  end)
end

-- Scrolls to the end of what was read until there is more. The log may be read again meanwhile.
local function scroll_on()
  local count = #harness.lines()
  harness.wait(function()
    harness.press("G")
    vim.cmd("doautocmd CursorMoved")
    return #harness.lines() > count
  end, "the next page")
end

-- Scrolls so far that a change of HEAD does not read the log again.
local function scroll_far()
  scroll_on()
  scroll_on()
  assert(vim.fn.line("w0") > 100)
end

-- Scrolls to the end of the log of open_long_log(), and checks that each commit is there once.
local function check_long_log()
  while #harness.lines() < 1000 do
    scroll_on()
  end
  for line, text in ipairs(harness.lines()) do
    harness.contains((" Commit %d "):format(1001 - line), text)
  end
end

function tests.PagesAreReadWhenTheWindowIsScrolled()
  open_long_log()
  assert(#harness.lines() <= 200, #harness.lines())
  check_long_log()
end

-- The server closes a cursor that was idle for some time.
function tests.LogGoesOnAfterItsCursorWasClosed()
  open_long_log()
  scroll_far()
  harness.git("commit", "--quiet", "--allow-empty", "--message", "Newer")
  local failure = harness.await(function(callback)
    server.request("sourceControl/close", { cursor = "1" }, callback)
  end)
  harness.equal(nil, failure)
  check_long_log()
end

-- Another server gives the same names to other cursors.
function tests.LogGoesOnAfterACrash()
  open_long_log()
  scroll_on()
  local buffer = vim.api.nvim_get_current_buf()
  vim.loop.kill(server.pid(), "sigkill")
  harness.wait_for_message("ended unexpectedly")
  local other = requests.pages("history", harness.root, {}, 1)
  harness.await(function(callback)
    other:next(callback)
  end)
  harness.equal("1", other.cursor)
  vim.api.nvim_set_current_buf(buffer)
  check_long_log()
  other:close()
end

function tests.LogOfARewrittenHistoryIsReadAgain()
  open_long_log()
  scroll_far()
  local root = harness.git("commit-tree", "-m", "Only", "HEAD^{tree}")
  harness.git("update-ref", "refs/heads/main", root)
  harness.run({ "rm", "-r", harness.root .. "/.git/objects/pack" })
  harness.await(function(callback)
    server.request("sourceControl/close", { cursor = "1" }, callback)
  end)
  harness.press("G")
  vim.cmd("doautocmd CursorMoved")
  harness.go_to("Only")
  harness.equal(1, #harness.lines())
end

function tests.LogOfAFileFollowsItsRename()
  harness.commit({ ["old name"] = "content\nof\nfile\n" }, "First")
  harness.commit({ other = "x\n" }, "Other")
  harness.git("mv", "old name", "new name")
  harness.commit({}, "Second")
  harness.edit("new name")
  harness.wait(function()
    return vim.b.nebgit_path
  end)
  open_log("file")
  harness.go_to("First")
  harness.equal(2, #harness.lines())
end

function tests.LogFollowsNewCommits()
  harness.commit({ file = "1\n" }, "First")
  open_log()
  harness.go_to("First")
  harness.commit({ file = "2\n" }, "Second")
  vim.cmd("doautocmd FocusGained")
  harness.go_to("Second")
end

function tests.NoCommits()
  open_log()
  harness.wait_for_message("nebgit: ")
end

function tests.StatusLine()
  harness.commit({ file = "1\n2\n" })
  harness.run({ "git", "init", "--quiet", "--bare", harness.folder .. "/shared.git" })
  harness.git("remote", "add", "origin", harness.folder .. "/shared.git")
  harness.git("push", "--quiet", "--set-upstream", "origin", "main")
  harness.commit({ other = "x\n" })
  harness.equal("", require("nebgit").statusline())
  harness.edit("file")
  vim.api.nvim_buf_set_lines(0, 0, 1, true, { "one", "and a half" })
  local text
  pcall(harness.wait, function()
    text = require("nebgit").statusline()
    return text == "main ↑1 +1 ~1"
  end)
  harness.equal("main ↑1 +1 ~1", text)
  harness.git("checkout", "--quiet", "--detach")
  vim.cmd("doautocmd FocusGained")
  harness.wait(function()
    return require("nebgit").statusline():find("(detached)", 1, true)
  end)
end

return tests
