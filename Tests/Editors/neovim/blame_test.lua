-- Blame of lines and files, and commits.
local harness = require("harness")
local requests = require("nebgit.requests")
local revision = require("nebgit.revision")
local text = require("nebgit.text")
local times = require("nebgit.times")

local tests = {}

-- Opens the file and waits until its working copy is known.
local function edit(path)
  local buffer = harness.edit(path)
  harness.wait(function()
    return vim.b[buffer].nebgit_path == path
  end)
  return buffer
end

-- Waits for the virtual text of the line, and returns it.
local function virtual_text(buffer, line)
  local namespace = vim.api.nvim_get_namespaces()["nebgit-blame"]
  return harness.wait(function()
    local first = { line - 1, 0 }
    local marks = vim.api.nvim_buf_get_extmarks(buffer, namespace, first, first, { details = true })
    return marks[1] and marks[1][4].virt_text[1][1]
  end, "the blame of a line")
end

local function open_blame(expected_first_line)
  vim.cmd("NEBGit blame")
  harness.wait(function()
    return harness.lines()[1]:find(expected_first_line, 1, true)
  end, "the blame of the file")
end

function tests.TimesAgo()
  local now = 1000000000
  harness.equal("just now", times.ago(now, now))
  harness.equal("1 minute ago", times.ago(now - 119, now))
  harness.equal("2 days ago", times.ago(now - 2 * 86400, now))
  harness.equal("3 years ago", times.ago(now - 3 * 366 * 86400, now))
  harness.equal("in the future", times.ago(now + 5, now))
  harness.equal("1970-01-01 05:30:00 +0530", times.full(0, 330))
  harness.equal("1969-12-31 20:30:00 -0330", times.full(0, -210))
end

function tests.LineIsBlamedInUnsavedText()
  harness.commit({ file = "1\n2\n" }, "Add a file")
  local buffer = edit("file")
  vim.cmd("NEBGit blame_line")
  harness.contains("Ann Example, ", virtual_text(buffer, 1))
  harness.contains("• Add a file", virtual_text(buffer, 1))
  vim.api.nvim_buf_set_lines(buffer, 0, 0, true, { "new" })
  vim.api.nvim_win_set_cursor(0, { 1, 0 })
  vim.cmd("doautocmd CursorMoved")
  harness.contains("Not committed", virtual_text(buffer, 1))
  vim.cmd("NEBGit blame_line")
  local namespace = vim.api.nvim_get_namespaces()["nebgit-blame"]
  harness.equal({}, vim.api.nvim_buf_get_extmarks(buffer, namespace, 0, -1, {}))
end

-- Neovim would have to wait until such a text is converted and sent.
function tests.LargeModifiedTextIsNotBlamed()
  harness.commit({ file = ("1234567\n"):rep(160 * 1024) })
  local buffer = edit("file")
  vim.api.nvim_buf_set_lines(buffer, 0, 0, true, { "new" })
  local bytes_of, calls = text.bytes_of, 0
  text.bytes_of = function()
    calls = calls + 1
    return ""
  end
  vim.cmd("NEBGit blame_line")
  vim.cmd("NEBGit blame")
  vim.cmd("NEBGit blame_line")
  text.bytes_of = bytes_of
  harness.equal(0, calls)
  harness.contains("write the file first", harness.messages())
  harness.equal(1, #vim.api.nvim_list_wins())
end

function tests.FileIsBlamedBesideIt()
  harness.commit({ file = "1\n2\n" }, "Add a file")
  edit("file")
  vim.api.nvim_buf_set_lines(0, 2, 2, true, { "new" })
  open_blame("Ann Example")
  local id = harness.git("rev-parse", "HEAD"):sub(1, 8)
  harness.contains(id, harness.lines()[2])
  harness.contains("2026-03-04", harness.lines()[2])
  harness.wait(function()
    return harness.lines()[3] == "Not committed"
  end)
  harness.equal(true, vim.wo.scrollbind)
  harness.press("q")
  harness.equal(false, vim.wo.scrollbind)
  harness.equal({ "1", "2", "new" }, harness.lines())
end

function tests.CommitOfALineIsShown()
  harness.commit({ file = "1\n2\n" }, "Add a file\n\nWith a body.")
  edit("file")
  open_blame("Ann Example")
  local blame = vim.api.nvim_get_current_win()
  harness.press("2G<CR>")
  harness.go_to("+2")
  harness.equal({ false, false }, { vim.wo.scrollbind, vim.wo.cursorbind })
  harness.equal(2, vim.api.nvim_win_get_cursor(blame)[1])
  local lines = harness.lines()
  harness.equal("commit " .. harness.git("rev-parse", "HEAD"), lines[1])
  harness.equal("Author: Ann Example <ann@example.org>", lines[2])
  harness.equal("Date:   2026-03-04 05:06:07 +0000", lines[3])
  harness.equal("    Add a file", lines[6])
  harness.equal("    With a body.", lines[8])
  harness.equal({
    "diff --git a/file b/file", "new file mode 100644", "--- /dev/null", "+++ b/file",
    "@@ -0,0 +1,2 @@", "+1", "+2",
  }, vim.list_slice(lines, 10))
end

function tests.ParentIsBlamedBeyondARename()
  harness.commit({ ["old name"] = "1\n2\n3\n4\n5\n6\n" }, "First")
  harness.git("mv", "old name", "new name")
  harness.commit({ ["new name"] = "1\n2\nchanged\n4\n5\n6\n" }, "Second")
  edit("new name")
  open_blame("Ann Example")
  vim.api.nvim_win_set_cursor(0, { 3, 0 })
  harness.press("-")
  local first = harness.git("rev-parse", "HEAD^"):sub(1, 8)
  harness.wait(function()
    return harness.lines()[3]:find(first, 1, true)
  end, "the blame of the parent")
  harness.equal(3, vim.fn.line("."))
  harness.press("-")
  harness.wait_for_message("added the line with the file")
  harness.press("q")
  harness.equal({ "1", "2", "3", "4", "5", "6" }, harness.lines())
end

-- The response may come when the user is in another window, or has closed that of the request.
function tests.OldFileIsShownInTheWindowThatAskedForIt()
  harness.commit({ file = "1\n", other = "x\n" })
  edit("file")
  local window = vim.api.nvim_get_current_win()
  harness.await(function(callback)
    revision.open(harness.root, "file", "HEAD", callback)
    vim.cmd("split " .. vim.fn.fnameescape(harness.root .. "/other"))
  end)
  harness.equal({ "x" }, harness.lines())
  harness.equal({ "1" }, harness.lines(vim.api.nvim_win_get_buf(window)))
  harness.contains("nebgit://", vim.api.nvim_buf_get_name(vim.api.nvim_win_get_buf(window)))
  vim.api.nvim_set_current_win(window)
  revision.open(harness.root, "other", "HEAD")
  vim.api.nvim_win_close(window, true)
  harness.await(function(callback)
    requests.perform("content", harness.root, { files = { "file" }, from = "HEAD" }, callback)
  end)
  harness.equal({ "x" }, harness.lines())
  harness.equal("", harness.messages())
end

function tests.FileThatIsNotTracked()
  harness.commit({ file = "1\n" })
  harness.write("new", "1\n")
  edit("new")
  vim.cmd("NEBGit blame")
  harness.wait_for_message("nebgit: ")
  harness.wait(function()
    return #vim.api.nvim_list_wins() == 1
  end)
end

function tests.MergeAndUnknownRevision()
  harness.commit({ file = "1\n" }, "Base")
  harness.git("checkout", "--quiet", "-b", "side")
  harness.commit({ side = "s\n" }, "Side")
  harness.git("checkout", "--quiet", "main")
  harness.commit({ main = "m\n" }, "Main")
  harness.git("merge", "--quiet", "--no-edit", "side")
  edit("file")
  vim.cmd("NEBGit show nosuch")
  harness.wait_for_message("nosuch")
  vim.cmd("NEBGit show")
  harness.go_to("+s")
  harness.contains("Merge:  ", harness.lines()[2])
end

return tests
