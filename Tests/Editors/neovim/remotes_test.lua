-- Push, pull and fetch with a remote on the disk.
local harness = require("harness")

local tests = {}

-- Creates the bare remote "origin" and a commit.
local function prepare()
  harness.commit({ file = "1\n" }, "First")
  harness.remote = harness.folder .. "/shared.git"
  harness.run({ "git", "init", "--quiet", "--bare", "--initial-branch=main", harness.remote })
  harness.git("remote", "add", "origin", harness.remote)
  harness.enter()
end

local function remote_log(branch)
  return vim.trim(harness.run({ "git", "-C", harness.remote, "log", "--format=%s", branch }))
end

-- Adds a commit to the remote's main from another clone.
local function commit_elsewhere()
  local root = harness.root
  harness.root = harness.folder .. "/other"
  harness.run({ "git", "clone", "--quiet", harness.remote, harness.root })
  harness.commit({ file = "theirs\n" }, "Theirs")
  harness.git("push", "--quiet")
  harness.root = root
end

function tests.NewBranchIsPushedAfterAQuestion()
  prepare()
  harness.answers = { "Push" }
  vim.cmd("NEBGit push")
  harness.wait_for_message("pushed main: new")
  harness.contains("Push the new branch 'main' to 'origin'", harness.questions[1])
  harness.equal("First", remote_log("main"))
  harness.equal("origin/main", harness.git("rev-parse", "--abbrev-ref", "@{upstream}"))
  harness.commit({ file = "2\n" }, "Second")
  vim.cmd("NEBGit push")
  harness.wait_for_message("pushed main: updated")
end

function tests.LinesOfTheRemoteAreShown()
  prepare()
  harness.git("push", "--quiet", "--set-upstream", "origin", "main")
  harness.write_program(harness.remote .. "/hooks/post-receive",
    "#!/bin/sh\necho 'Create a merge request:'\necho '  https://example.org/new'\n")
  harness.commit({ file = "2\n" }, "Second")
  vim.cmd("NEBGit push")
  harness.wait_for_message("pushed main: updated")
  harness.contains("\nremote: Create a merge request:\nremote:   https://example.org/new",
    harness.messages())
end

function tests.PushIsRefusedThenPulledAndForced()
  prepare()
  harness.git("push", "--quiet", "--set-upstream", "origin", "main")
  commit_elsewhere()
  harness.commit({ mine = "x\n" }, "Mine")
  vim.cmd("NEBGit push")
  harness.wait_for_message("does not have the latest remote changes")
  harness.configure({ pull = "rebase" })
  vim.cmd("NEBGit pull")
  harness.wait_for_message("pulled")
  harness.equal("Mine\nTheirs\nFirst", harness.git("log", "--format=%s"))
  harness.git("reset", "--quiet", "--hard", "HEAD^")
  harness.commit({ mine = "y\n" }, "Mine again")
  harness.git("reset", "--quiet", "--soft", "HEAD~2")
  harness.git("commit", "--quiet", "--message", "Both")
  harness.answers = { "Force" }
  vim.cmd("NEBGit push force")
  harness.wait_for_message("pushed main: forced")
  harness.equal("Both\nFirst", remote_log("main"))
end

function tests.PullFollowsTheSettingsOfGit()
  prepare()
  harness.git("push", "--quiet", "--set-upstream", "origin", "main")
  commit_elsewhere()
  harness.git("config", "pull.ff", "only")
  vim.cmd("NEBGit pull")
  harness.wait_for_message("pulling (fast-forward)")
  harness.wait_for_message("nebgit: pulled")
  vim.cmd("NEBGit pull")
  harness.wait_for_message("already up to date")
end

-- The last value of a setting counts, and that of the branch counts before the general one.
function tests.PullFollowsTheSettingThatCounts()
  prepare()
  harness.git("push", "--quiet", "--set-upstream", "origin", "main")
  local user = harness.folder .. "/gitconfig"
  vim.env.GIT_CONFIG_GLOBAL = user
  local function pull(expected)
    local before = #harness.messages()
    vim.cmd("NEBGit pull")
    harness.wait(function()
      return harness.messages():find("already up to date", before, true)
    end, "the end of the pull")
    harness.contains(("pulling (%s)"):format(expected), harness.messages():sub(before))
  end
  local ok, problem = pcall(function()
    harness.run({ "git", "config", "--file", user, "pull.ff", "only" })
    harness.git("config", "pull.ff", "true")
    pull("merge")
    harness.git("config", "pull.rebase", "true")
    pull("rebase")
    harness.git("config", "branch.main.rebase", "No")
    pull("merge")
    harness.git("config", "pull.rebase", "false")
    harness.git("config", "branch.main.rebase", "merges")
    pull("rebase")
    harness.git("config", "pull.ff", "only")
    pull("fast-forward")
  end)
  vim.env.GIT_CONFIG_GLOBAL = "/dev/null"
  assert(ok, problem)
end

function tests.PullReloadsBuffers()
  prepare()
  harness.git("push", "--quiet", "--set-upstream", "origin", "main")
  commit_elsewhere()
  harness.edit("file")
  vim.cmd("NEBGit pull")
  harness.wait(function()
    return harness.lines()[1] == "theirs"
  end, "the content that was pulled")
end

function tests.FetchChoosesAmongRemotes()
  prepare()
  harness.git("push", "--quiet", "origin", "main")
  harness.git("remote", "add", "second", harness.remote)
  harness.answers = { "second" }
  vim.cmd("NEBGit fetch")
  harness.wait_for_message("fetched from 'second'")
  harness.contains("second/main", harness.git("branch", "--remotes"))
end

function tests.RepositoryWithoutARemote()
  harness.commit({ file = "1\n" })
  harness.enter()
  vim.cmd("NEBGit fetch")
  harness.wait_for_message("has no remote")
end

function tests.UnreachableRemoteIsReported()
  prepare()
  harness.git("remote", "set-url", "origin", harness.folder .. "/gone.git")
  vim.cmd("NEBGit fetch")
  harness.wait_for_message("fetching from 'origin'")
  harness.wait(function()
    return #vim.split(harness.messages(), "nebgit: ") > 2
  end)
end

return tests
