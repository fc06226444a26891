-- A day of work, only with commands and keys of the plug-in.
local harness = require("harness")
local changes = require("nebgit.changes")

local tests = {}

local function run(command, message)
  vim.cmd("NEBGit " .. command)
  harness.wait_for_message(message)
end

-- Opens a file and waits until it is compared with the index.
local function edit(path)
  local buffer = harness.edit(path)
  harness.wait(function()
    return changes.state(buffer) and changes.state(buffer).base
  end, "the base of " .. path)
  return buffer
end

-- Commits with the window of the message, and waits for the commit.
local function commit(arguments, subject)
  vim.cmd("NEBGit commit " .. arguments)
  harness.wait(function()
    return vim.bo.filetype == "gitcommit"
  end, "the window of the message")
  vim.api.nvim_buf_set_lines(0, 0, 1, true, { subject })
  vim.cmd("wq")
  harness.wait(function()
    return harness.git("log", "-1", "--format=%s") == subject
  end, "the commit " .. subject)
end

-- Changes a line of the buffer, writes it and stages the change.
local function change_and_stage(path, line, text)
  local buffer = edit(path)
  vim.api.nvim_buf_set_lines(buffer, line - 1, line, true, { text })
  vim.cmd("silent write")
  vim.api.nvim_win_set_cursor(0, { line, 0 })
  vim.cmd("NEBGit stage_hunk")
  harness.wait(function()
    return harness.git("diff", "--cached", "--name-only") == path
      and harness.git("diff", "--name-only") == ""
  end, "the staged change of " .. path)
  harness.wait(function()
    return #changes.state(buffer).hunks == 0
  end, "the signs of " .. path)
end

-- Creates the repository with 100,000 commits and 5 changed files.
local function create_large_repository()
  local tests = vim.fn.fnamemodify(debug.getinfo(1, "S").source:sub(2), ":p:h:h")
  vim.fn.delete(harness.root, "rf")
  harness.run({ tests .. "/large_repository.sh", harness.root })
end

-- Commits a file, and makes the repository one to clone.
local function prepare_remote()
  harness.commit({ ["main.c"] = "int main() {\n  return 0;\n}\n" }, "Begin")
  harness.remote = harness.folder .. "/shared project.git"
  harness.run({ "git", "clone", "--quiet", "--bare", harness.root, harness.remote })
  harness.root = harness.folder .. "/my clone"
end

-- Clones, commits, merges, stashes and pushes.
local function work()
  prepare_remote()
  vim.cmd("cd " .. vim.fn.fnameescape(harness.folder))
  local function escaped(path)
    return (path:gsub(" ", "\\ "))
  end
  run(("clone %s %s"):format(escaped(harness.remote), escaped(harness.root)), "cloned into")
  change_and_stage("main.c", 2, "  return 1;")
  commit("", "Return 1")
  change_and_stage("main.c", 2, "  return 2;")
  commit("amend", "Return 2")
  harness.equal("1", harness.git("rev-list", "--count", "origin/main..HEAD"))

  harness.answers = { "Create a branch …", "topic" }
  run("switch", "switched to 'topic'")
  change_and_stage("main.c", 2, "  return 3;")
  commit("", "Return 3")
  run("switch main", "switched to 'main'")
  change_and_stage("main.c", 2, "  return 4;")
  commit("", "Return 4")

  run("merge topic", "conflicts")
  vim.cmd("NEBGit status")
  harness.go_to("both modified")
  harness.write("main.c", "int main() {\n  return 5;\n}\n")
  harness.press("s")
  harness.go_to("Staged (1)")
  harness.press("rc")
  harness.wait_for_message("continued")
  harness.press("q")
  harness.equal("1", harness.git("rev-list", "--count", "--merges", "HEAD"))

  vim.cmd("edit! " .. vim.fn.fnameescape(harness.root .. "/main.c"))
  vim.api.nvim_buf_set_lines(0, 0, 0, true, { "// later" })
  vim.cmd("silent write")
  harness.answers = { "Stash changes", "Later" }
  run("stash", "stashed")
  run("push", "pushed main: updated")
  harness.equal(harness.git("rev-parse", "HEAD"),
    vim.trim(harness.run({ "git", "-C", harness.remote, "rev-parse", "main" })))
  harness.answers = { "stash@{0}: On main: Later", "Pop" }
  run("stash", "popped")
  harness.wait_for_content("main.c", "// later")
end

function tests.FromCloneToPush()
  work()
end

local function wait_for_text(text)
  harness.wait(function()
    return table.concat(harness.lines(), "\n"):find(text, 1, true)
  end, text)
end

-- Scrolls in the log, and shows a commit.
local function read_log()
  vim.cmd("NEBGit log")
  wait_for_text("Change 99950")
  harness.equal(true, vim.fn.line("$") < 2000)
  harness.wait(function()
    vim.cmd("normal! G")
    -- The event does not arrive while the test runs.
    vim.cmd("doautocmd CursorMoved")
    return vim.fn.line("$") > 3000
  end, "pages of the log")
  harness.go_to("Change 97500")
  harness.press("<CR>")
  wait_for_text("+97500")
  vim.cmd("silent only")
end

function tests.LargeHistory()
  create_large_repository()
  work()
  vim.cmd("silent! %bwipeout!")
  harness.enter()
  read_log()
  harness.edit("history/0/1")
  harness.wait(function()
    return vim.b.nebgit_path
  end, "the path of the file")
  vim.cmd("NEBGit blame")
  wait_for_text("Ann Example")
  vim.cmd("silent only")
  harness.write("d000/f000003", "changed\n")
  vim.cmd("NEBGit status")
  harness.go_to("modified         d000/f000003")
  harness.press("s")
  harness.go_to("Staged (1)")
  commit("", "Change a file")
  harness.equal("d000/f000003", harness.git("show", "--format=", "--name-only"))
end

return tests
