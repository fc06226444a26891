-- The status window and its keys.
local harness = require("harness")

local tests = {}

-- Waits until the window shows the lines, without the first one, which names the folder.
local function wait_for_lines(expected)
  local actual
  local ok = pcall(harness.wait, function()
    actual = vim.list_slice(harness.lines(), 2)
    return vim.deep_equal(expected, actual)
  end)
  if not ok then
    harness.equal(expected, actual)
  end
end

local function go_and_press(text, keys)
  harness.go_to(text)
  harness.press(keys)
end

function tests.NothingIsClaimedBeforeTheStateIsRead()
  harness.commit({ file = "1\n" })
  harness.enter()
  require("nebgit.status.window").open(harness.root)
  harness.equal({ "Working copy: " .. harness.root, "Reading …" }, harness.lines())
  harness.go_to("Nothing to commit")
end

local clean = { "Branch: main", "", "Nothing to commit, the working copy is clean" }

function tests.TextThatFitsIsShownFromItsStart()
  harness.commit({ file = "1\n" })
  for number = 1, 20 do
    harness.write("new" .. number, "x\n")
  end
  harness.open_status()
  vim.api.nvim_win_set_height(0, 6)
  vim.fn.winrestview({ topline = 3, lnum = 3 })
  harness.equal(3, vim.fn.line("w0"))
  harness.git("clean", "--quiet", "--force")
  harness.press("R")
  harness.go_to("Nothing to commit")
  harness.equal(1, vim.fn.line("w0"))
end

function tests.TheListOfKeysIsClosedBeforeTheWindow()
  harness.commit({ file = "1\n" })
  harness.open_status()
  local status, windows = vim.api.nvim_get_current_win(), #vim.api.nvim_list_wins()
  harness.press("g?")
  harness.equal(windows + 1, #vim.api.nvim_list_wins())
  harness.press("q")
  harness.equal(windows, #vim.api.nvim_list_wins())
  harness.equal(status, vim.api.nvim_get_current_win())
  harness.press("q")
  harness.equal(false, vim.api.nvim_win_is_valid(status))
end

function tests.AllSections()
  harness.commit({ ["a b"] = "1\n", gone = "x\n", moved = "content\nof\nfile\n" })
  harness.write("a b", "2\n")
  harness.git("mv", "moved", "new place")
  os.remove(harness.root .. "/gone")
  harness.write("new\nline", "x\n")
  harness.write("folder/file", "x\n")
  harness.open_status()
  harness.equal("Working copy: " .. harness.root, harness.lines()[1])
  wait_for_lines({
    "Branch: main",
    "",
    "Untracked (2)",
    "untracked        folder/",
    'untracked        "new\\012line"',
    "",
    "Unstaged (2)",
    "modified         a b",
    "deleted          gone",
    "",
    "Staged (1)",
    "renamed          moved -> new place",
  })
end

function tests.NoCommitsYet()
  harness.open_status()
  wait_for_lines({ "Branch: main (no commits yet)", "", clean[3] })
end

function tests.FilesAreStagedAndUnstaged()
  local names = { "-dash", "a b", "b\228r", 'q"uote', "line\nend", "*" }
  harness.commit({ kept = "x\n" })
  for _, name in ipairs(names) do
    harness.write(name, "x\n")
  end
  harness.open_status()
  go_and_press("Untracked (6)", "s")
  harness.go_to("Staged (6)")
  harness.press("jVGs")
  harness.wait_for_message("nothing to stage here")
  go_and_press("Staged (6)", "jVGu")
  harness.go_to("Untracked (6)")
  go_and_press("b\\344r", "s")
  harness.go_to("Staged (1)")
  harness.equal('"b\\344r"', harness.git("diff", "--cached", "--name-only"))
end

function tests.RenameIsUnstagedAsAWhole()
  harness.commit({ old = "content\nof\nfile\n" })
  harness.git("mv", "old", "new")
  harness.open_status()
  go_and_press("renamed", "u")
  harness.go_to("Untracked (1)")
  harness.go_to("deleted          old")
  harness.equal("", harness.git("diff", "--cached", "--name-only"))
end

function tests.HunksAreShownStagedAndUnstaged()
  harness.commit({ ["a file"] = "1\n2\n3\n4\n5\n6\n7\n8\n9\n" })
  harness.write("a file", "one\n2\n3\n4\n5\n6\n7\n8\nnine\n")
  harness.open_status()
  go_and_press("modified", "=")
  go_and_press("+nine", "s")
  harness.go_to("Staged (1)")
  harness.equal("1\n2\n3\n4\n5\n6\n7\n8\nnine", harness.git("cat-file", "blob", ":a file"))
  harness.wait(function()
    return not vim.tbl_contains(harness.lines(), "    +nine")
  end)
  harness.press("j=")
  go_and_press("+nine", "u")
  harness.wait(function()
    return harness.git("diff", "--cached") == ""
  end)
  go_and_press("Unstaged (1)", "j=")
  harness.wait(function()
    return not vim.tbl_contains(harness.lines(), "    +one")
  end, "the end of the expanded changes")
end

function tests.DiscardAsksAndSaysWhatIsLost()
  harness.commit({ file = "1\n", gone = "x\n" })
  harness.write("file", "2\n")
  harness.write("new", "x\n")
  harness.open_status()
  harness.answers = { "Cancel" }
  go_and_press("Untracked (1)", "Vjjjjx")
  harness.wait(function()
    return #harness.questions == 1
  end)
  harness.contains("lose changes of file", harness.questions[1])
  harness.contains("delete new", harness.questions[1])
  harness.equal("2\n", harness.read("file"))
  harness.answers = { "Discard" }
  go_and_press("Untracked (1)", "Vjjjjx")
  wait_for_lines(clean)
  harness.equal("1\n", harness.read("file"))
end

function tests.HunkIsDiscarded()
  harness.commit({ file = "1\n2\n3\n4\n5\n6\n7\n8\n9\n" })
  harness.write("file", "one\n2\n3\n4\n5\n6\n7\n8\nnine\n")
  harness.open_status()
  go_and_press("modified", "=")
  harness.answers = { "Discard" }
  go_and_press("+one", "x")
  harness.wait_for_content("file", "1\n2\n3\n4\n5\n6\n7\n8\nnine\n")
end

-- Opens the status with the changes of the files a, two hunks, and b, one; the file c is gone.
local function open_hunks()
  local numbers = "1\n2\n3\n4\n5\n6\n7\n8\n9\n"
  harness.commit({ a = numbers, b = numbers, c = numbers })
  harness.write("a", "one\n2\n3\n4\n5\n6\n7\n8\nnine\n")
  harness.write("b", "1\n2\n3\n4\nfive\n6\n7\n8\n9\n")
  os.remove(harness.root .. "/c")
  harness.open_status()
  for _, line in ipairs({ "modified         b", "modified         a" }) do
    go_and_press(line, "=")
  end
  harness.go_to("+nine")
  harness.go_to("+five")
end

function tests.SelectedHunksOfFilesAreStagedAndUnstaged()
  open_hunks()
  go_and_press("+nine", "VGs")
  harness.go_to("Staged (3)")
  harness.equal("1\n2\n3\n4\n5\n6\n7\n8\nnine", harness.git("cat-file", "blob", ":a"))
  harness.equal("1\n2\n3\n4\nfive\n6\n7\n8\n9", harness.git("cat-file", "blob", ":b"))
  harness.equal("D\tc", harness.git("diff", "--cached", "--name-status", "--", "c"))
  go_and_press("+one", "s")
  harness.wait(function()
    return not vim.tbl_contains(harness.lines(), "Unstaged (1)")
  end, "the end of the section")
  go_and_press("modified         a", "=")
  go_and_press("+one", "V")
  harness.go_to("+nine")
  harness.press("u")
  harness.wait(function()
    return harness.git("diff", "--cached", "--name-only") == "b\nc"
  end)
end

function tests.SelectedHunksAreDiscardedAfterOneQuestion()
  open_hunks()
  harness.answers = { "Discard" }
  go_and_press("+one", "VGx")
  wait_for_lines(clean)
  harness.equal(1, #harness.questions)
  local expected = "lose 2 hunks of a\n  lose changes of b\n  lose changes of c"
  harness.contains(expected, harness.questions[1])
end

-- The position counts where lines repeat, and it depends on the other hunks that are chosen.
function tests.HunkAmongEqualLinesIsStagedAndUnstagedAtItsPosition()
  local lines, without, with = ("x\n"):rep(30), ("x\n"):rep(20) .. "new\n", nil
  without = without .. ("x\n"):rep(10)
  with = ("y\n"):rep(8) .. without
  harness.commit({ file = lines })
  harness.write("file", with)
  harness.open_status()
  go_and_press("modified", "=")
  go_and_press("+new", "s")
  harness.go_to("Staged (1)")
  harness.equal(vim.trim(without), harness.git("cat-file", "blob", ":file"))
  harness.git("add", "file")
  harness.press("R")
  harness.wait(function()
    return not vim.tbl_contains(harness.lines(), "Unstaged (1)")
  end)
  go_and_press("modified", "=")
  go_and_press("+y", "u")
  harness.go_to("Unstaged (1)")
  harness.equal(vim.trim(without), harness.git("cat-file", "blob", ":file"))
end

function tests.StagedChangesAreNotDiscarded()
  harness.commit({ file = "1\n" })
  harness.write("file", "2\n")
  harness.git("add", "file")
  harness.open_status()
  go_and_press("modified", "x")
  harness.wait_for_message("must be unstaged first")
  harness.equal("2\n", harness.read("file"))
end

function tests.FileIsOpened()
  harness.commit({ ["a 'b' %#"] = "1\n" })
  harness.write("a 'b' %#", "2\n")
  harness.open_status()
  go_and_press("modified", "<CR>")
  harness.equal({ "2" }, harness.lines())
end

function tests.CommitAndAmend()
  harness.write("file", "1\n")
  harness.git("add", "file")
  harness.open_status()
  harness.press("cc")
  harness.equal("gitcommit", vim.bo.filetype)
  vim.api.nvim_buf_set_lines(0, 0, 1, true, { "Add a file", "", "# not a comment" })
  vim.cmd("wq")
  wait_for_lines(clean)
  harness.equal("Add a file\n\n# not a comment\n", harness.git("log", "-1", "--format=%B"))
  harness.write("file", "2\n")
  harness.git("add", "file")
  harness.press("ca")
  harness.wait(function()
    return vim.bo.filetype == "gitcommit"
  end)
  harness.equal("# not a comment", harness.lines()[3])
  vim.api.nvim_buf_set_lines(0, 0, 1, true, { "Add another file" })
  vim.cmd("wq")
  harness.wait(function()
    return harness.git("log", "--format=%s") == "Add another file"
  end, "the amended commit")
end

function tests.MessageSurvivesARefusal()
  harness.commit({ file = "1\n" })
  harness.write_program(".git/hooks/commit-msg", "#!/bin/sh\necho 'ticket missing' >&2\nexit 1\n")
  harness.write("file", "2\n")
  harness.git("add", "file")
  harness.open_status()
  harness.press("cc")
  vim.api.nvim_buf_set_lines(0, 0, 1, true, { "No ticket" })
  vim.cmd("wq")
  harness.wait_for_message("ticket missing")
  harness.wait(function()
    return vim.bo.filetype == "gitcommit"
  end)
  harness.equal("No ticket", harness.lines()[1])
  os.remove(harness.root .. "/.git/hooks/commit-msg")
  vim.cmd("wq")
  wait_for_lines(clean)
end

function tests.AbandonedMessageIsKeptAndDoesNotBlockTheExit()
  harness.open_status()
  harness.press("cc")
  vim.api.nvim_buf_set_lines(0, 0, 1, true, { "Half of a message" })
  vim.cmd("q!")
  for _, buffer in ipairs(vim.api.nvim_list_bufs()) do
    harness.equal(false, vim.bo[buffer].modified)
  end
  harness.press("cc")
  harness.equal("Half of a message", harness.lines()[1])
end

function tests.BranchIsCreatedAndSwitched()
  harness.commit({ file = "1\n" })
  harness.open_status()
  harness.answers = { "Create a branch …", "topic" }
  harness.press("b")
  harness.go_to("Branch: topic")
  harness.answers = { "main" }
  harness.press("b")
  harness.go_to("Branch: main")
end

function tests.StashIsMadeAndPopped()
  harness.commit({ file = "1\n" })
  harness.write("file", "2\n")
  harness.open_status()
  harness.answers = { "Stash changes", "Half done" }
  harness.press("z")
  harness.go_to("Stashes: 1")
  harness.equal("1\n", harness.read("file"))
  harness.answers = { "stash@{0}: On main: Half done", "Pop" }
  harness.press("z")
  harness.go_to("modified         file")
  harness.equal("", harness.git("stash", "list"))
end

function tests.ConflictIsResolvedAndContinued()
  harness.commit({ file = "base\n" })
  harness.git("checkout", "--quiet", "-b", "side")
  harness.commit({ file = "side\n" }, "Side")
  harness.git("checkout", "--quiet", "main")
  harness.commit({ file = "main\n" }, "Main")
  pcall(harness.git, "merge", "--quiet", "side")
  harness.open_status()
  harness.go_to("(rc continue, ra abort)")
  harness.press("rs")
  harness.wait_for_message("a merge cannot be skipped")
  harness.answers = { "Abort" }
  harness.press("ra")
  wait_for_lines(clean)
  pcall(harness.git, "rebase", "--quiet", "side")
  harness.press("R")
  harness.go_to("Unfinished: rebase, step 1 of 1")
  harness.go_to("(rc continue, rs skip, ra abort)")
  harness.write("file", "both\n")
  go_and_press("both modified", "s")
  harness.go_to("Staged (1)")
  harness.press("rc")
  harness.wait_for_message("continued")
  wait_for_lines(clean)
  harness.equal("Main\nSide\nChange files", harness.git("log", "--format=%s"))
end

function tests.NothingIsAskedWithoutAnOperation()
  harness.commit({ file = "1\n" })
  harness.open_status()
  harness.answers = { "Abort", "Skip" }
  for key, action in pairs({ ra = "abort", rs = "skip" }) do
    harness.press(key)
    harness.wait_for_message("there is no merge, rebase, cherry-pick or revert to " .. action)
  end
  harness.equal({ "Abort", "Skip" }, harness.answers)
  harness.answers = {}
end

function tests.ManyPathsAreShownInPart()
  for number = 1, 30 do
    harness.write(("f%02d"):format(number), "")
  end
  harness.configure({ status = { max_paths = 10 } })
  harness.open_status()
  harness.go_to("… 20 more")
  harness.equal(nil, vim.tbl_contains(harness.lines(), "untracked        f11") or nil)
  harness.press("=")
  harness.go_to("f30")
  go_and_press("Untracked (30)", "s")
  harness.go_to("Staged (30)")
end

function tests.OutsideAWorkingCopy()
  vim.cmd("cd " .. vim.fn.fnameescape(harness.folder))
  vim.cmd("NEBGit status")
  harness.wait_for_message("not in a working copy")
end

return tests
