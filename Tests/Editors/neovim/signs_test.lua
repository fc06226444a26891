-- Signs and hunk commands in buffers.
local changes = require("nebgit.changes")
local harness = require("harness")
local signs = require("nebgit.signs")

local tests = {}

-- Waits for the signs, lines from 1, in the current buffer.
local function wait_for_signs(expected)
  local buffer, actual = vim.api.nvim_get_current_buf(), nil
  local ok = pcall(harness.wait, function()
    local state = changes.state(buffer)
    actual = state and state.base and signs.placed(buffer) or "not tracked"
    return vim.deep_equal(expected, actual)
  end)
  if not ok then
    harness.equal(expected, actual)
  end
end

local function set_lines(first, last, lines)
  vim.api.nvim_buf_set_lines(0, first, last, true, lines)
end

local function wait_for_index(path, content)
  harness.wait(function()
    local command = { "git", "-C", harness.root, "cat-file", "blob", ":0:" .. path }
    return vim.fn.system(command) == content
  end, "the content of the index: " .. content)
end

function tests.SignsOfUnsavedText()
  harness.commit({ file = "1\n2\n3\n4\n5\n" })
  harness.edit("file")
  wait_for_signs({})
  set_lines(1, 2, { "two" })
  wait_for_signs({ [2] = "change" })
  set_lines(5, 5, { "6" })
  set_lines(3, 4, {})
  wait_for_signs({ [2] = "change", [3] = "delete", [5] = "add" })
  harness.equal({ 1, 1, 1 }, vim.b.nebgit_changes)
  vim.cmd("undo | undo | undo")
  vim.cmd("silent! undo")
  wait_for_signs({})
end

function tests.SignsFollowTheIndex()
  harness.commit({ file = "1\n2\n" })
  harness.edit("file")
  set_lines(0, 1, { "one" })
  wait_for_signs({ [1] = "change" })
  vim.cmd("silent write")
  harness.git("add", "file")
  vim.cmd("doautocmd FocusGained")
  wait_for_signs({})
end

function tests.BufferThatLeavesTheRepositoryIsForgotten()
  harness.commit({ file = "1\n" })
  local buffer = harness.edit("file")
  wait_for_signs({})
  vim.cmd("silent saveas " .. vim.fn.fnameescape(harness.folder .. "/elsewhere"))
  harness.wait(function()
    return not (vim.b[buffer].nebgit_root or vim.b[buffer].nebgit_path)
  end, "the end of the old names")
  vim.cmd("NEBGit stage")
  harness.wait_for_message("not in a working copy")
  harness.equal("", require("nebgit").statusline())
end

-- Nothing follows such a buffer, whose end is not seen.
function tests.BufferOutsideARepositoryHasNoTimer()
  local new_timer, timers = vim.loop.new_timer, {}
  vim.loop.new_timer = function()
    timers[#timers + 1] = new_timer()
    return timers[#timers]
  end
  harness.write(harness.folder .. "/elsewhere", "1\n")
  vim.cmd("edit " .. vim.fn.fnameescape(harness.folder .. "/elsewhere"))
  vim.loop.new_timer = new_timer
  harness.equal(1, #timers)
  harness.wait(function()
    return timers[1]:is_closing()
  end, "the end of the timer")
end

function tests.HunkOfABufferThatIsWipedIsNotStaged()
  harness.commit({ file = "1\n" })
  harness.edit("file")
  wait_for_signs({})
  set_lines(0, 1, { "one" })
  vim.cmd("NEBGit stage_hunk")
  vim.cmd("bwipeout!")
  harness.wait_for_message("the text has changed meanwhile; nothing was staged")
  harness.equal("", harness.git("diff", "--cached", "--name-only"))
end

function tests.FileThatIsNotTracked()
  harness.write("new", "1\n")
  local buffer = harness.edit("new")
  harness.wait(function()
    local state = changes.state(buffer)
    return state and not state.cancel
  end)
  harness.equal({}, signs.placed(buffer))
  vim.cmd("NEBGit stage_hunk")
  harness.contains("not tracked", harness.messages())
end

function tests.FileOutsideARepository()
  vim.fn.writefile({ "x" }, harness.folder .. "/outside")
  vim.cmd("edit " .. harness.folder .. "/outside")
  vim.cmd("NEBGit next_hunk")
  harness.contains("not tracked", harness.messages())
end

function tests.LineEndsAndEncodingsShowNoFalseChanges()
  harness.git("config", "core.autocrlf", "true")
  harness.commit({ crlf = "a\r\nb\r\n", ["no end"] = "a\nb", empty = "", latin = "b\228r\n" })
  harness.git("config", "core.autocrlf", "false")
  harness.commit({ raw = "a\r\nb\r\n", mixed = "a\r\nb\n" })
  for _, path in ipairs({ "crlf", "no end", "empty", "latin", "raw", "mixed" }) do
    harness.edit(path)
    wait_for_signs({})
  end
end

function tests.HunksAreReached()
  harness.commit({ file = "1\n2\n3\n4\n5\n" })
  harness.edit("file")
  set_lines(1, 2, { "two" })
  set_lines(3, 4, { "four" })
  wait_for_signs({ [2] = "change", [4] = "change" })
  vim.cmd("NEBGit next_hunk")
  harness.equal(2, vim.fn.line("."))
  harness.press("]h")
  harness.equal(4, vim.fn.line("."))
  harness.press("[h")
  harness.equal(2, vim.fn.line("."))
end

function tests.HunkIsShownInAWindow()
  harness.commit({ file = "1\n2\n3\n" })
  harness.edit("file")
  set_lines(1, 2, { "two", "and a half" })
  wait_for_signs({ [2] = "change", [3] = "add" })
  vim.api.nvim_win_set_cursor(0, { 2, 0 })
  vim.cmd("NEBGit preview_hunk")
  local windows = vim.api.nvim_list_wins()
  harness.equal(2, #windows)
  local shown = harness.lines(vim.api.nvim_win_get_buf(windows[2]))
  harness.equal({ "@@ -2,1 +2,2 @@", "-2", "+two", "+and a half" }, shown)
end

function tests.HunkIsStagedFromUnsavedText()
  harness.commit({ ["a file"] = "1\n2\n3\n4\n5\n6\n7\n8\n9\n" })
  harness.edit("a file")
  set_lines(0, 1, { "one" })
  set_lines(8, 9, { "nine" })
  wait_for_signs({ [1] = "change", [9] = "change" })
  vim.api.nvim_win_set_cursor(0, { 9, 0 })
  vim.cmd("NEBGit stage_hunk")
  wait_for_index("a file", "1\n2\n3\n4\n5\n6\n7\n8\nnine\n")
  wait_for_signs({ [1] = "change" })
  harness.equal("1\n2\n3\n4\n5\n6\n7\n8\n9\n", harness.read("a file"))
end

function tests.SelectedLinesAreStaged()
  harness.commit({ file = "1\n2\n" })
  harness.edit("file")
  set_lines(1, 1, { "a", "b", "c" })
  wait_for_signs({ [2] = "add", [3] = "add", [4] = "add" })
  vim.cmd("3,4NEBGit stage_hunk")
  wait_for_index("file", "1\nb\nc\n2\n")
  wait_for_signs({ [2] = "add" })
end

function tests.NeighbouringHunksAreStagedTogether()
  harness.commit({ file = "1\n2\n3\n4\n5\n" })
  harness.edit("file")
  set_lines(1, 2, { "two" })
  set_lines(3, 4, { "four" })
  wait_for_signs({ [2] = "change", [4] = "change" })
  vim.cmd("%NEBGit stage_hunk")
  wait_for_index("file", "1\ntwo\n3\nfour\n5\n")
end

function tests.HunkOfAFileWithCarriageReturnsIsStaged()
  harness.commit({ file = "a\r\nb\r\n" })
  harness.edit("file")
  set_lines(1, 2, { "B" })
  wait_for_signs({ [2] = "change" })
  vim.cmd("%NEBGit stage_hunk")
  wait_for_index("file", "a\r\nB\r\n")
end

function tests.HunkOfAFilteredFileIsRefused()
  harness.git("config", "filter.up.clean", "tr A-Z a-z")
  harness.git("config", "filter.up.smudge", "tr a-z A-Z")
  harness.commit({ [".gitattributes"] = "file filter=up\n", file = "A\nB\n" })
  harness.edit("file")
  wait_for_signs({})
  set_lines(1, 2, { "C" })
  wait_for_signs({ [2] = "change" })
  vim.cmd("%NEBGit stage_hunk")
  harness.wait_for_message("a filter changes the file")
end

function tests.StagedHunkIsUnstaged()
  harness.commit({ file = "1\n2\n3\n4\n5\n6\n7\n8\n9\n10\n11\n12\n" })
  harness.write("file", "one\n2\n3\n4\n5\n6\n7\n8\n9\n10\n11\ntwelve\n")
  harness.git("add", "file")
  harness.edit("file")
  set_lines(0, 0, { "zero" })
  wait_for_signs({ [1] = "add" })
  vim.api.nvim_win_set_cursor(0, { 13, 0 })
  vim.cmd("NEBGit unstage_hunk")
  wait_for_index("file", "one\n2\n3\n4\n5\n6\n7\n8\n9\n10\n11\n12\n")
  wait_for_signs({ [1] = "add", [13] = "change" })
end

function tests.HunksAreReset()
  harness.commit({ file = "1\n2\n3\n4\n" })
  harness.edit("file")
  wait_for_signs({})
  local changed = {
    { "0", "1", "2", "3", "4" }, { "2", "3", "4" }, { "1", "x", "y", "4" }, {}, { "z" },
  }
  for _, lines in ipairs(changed) do
    set_lines(0, -1, lines)
    vim.cmd("%NEBGit reset_hunk")
    harness.equal({ "1", "2", "3", "4" }, harness.lines())
  end
  harness.equal("1\n2\n3\n4\n", harness.read("file"))
end

function tests.NewNameIsFollowed()
  harness.commit({ file = "1\n2\n" })
  harness.edit("file")
  wait_for_signs({})
  vim.cmd("silent saveas " .. harness.root .. "/other")
  harness.wait(function()
    local state = changes.state(0)
    return state and state.path == "other" and not state.cancel
  end)
  harness.equal(nil, changes.state(0).base)
end

function tests.LinkLeadsToItsWorkingCopy()
  harness.commit({ file = "1\n2\n" })
  vim.loop.fs_symlink(harness.root, harness.folder .. "/link")
  vim.cmd("edit " .. harness.folder .. "/link/file")
  set_lines(0, 1, { "one" })
  wait_for_signs({ [1] = "change" })
end

function tests.WithoutSignsHunksBlameAndWatchWork()
  harness.configure({ signs = { enabled = false } })
  harness.commit({ file = "1\n2\n" })
  local buffer = harness.edit("file")
  harness.wait(function()
    return changes.state(buffer) and changes.state(buffer).base
  end, "the base")
  set_lines(0, 1, { "one" })
  harness.wait(function()
    return #changes.state(buffer).hunks == 1
  end, "the hunk")
  harness.equal({}, signs.placed(buffer))
  harness.wait(function()
    return require("nebgit.watch").is_active(harness.root)
  end, "the watch")
  vim.cmd("NEBGit stage_hunk")
  wait_for_index("file", "one\n2\n")
  vim.cmd("silent write | NEBGit blame")
  harness.wait(function()
    return #vim.api.nvim_list_wins() == 2
  end, "the window of the blame")
end

return tests
