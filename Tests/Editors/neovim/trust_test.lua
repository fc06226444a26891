-- Repositories that are inspected, because the user does not trust them.
local harness = require("harness")
local trust = require("nebgit.trust")
local window = require("nebgit.status.window")

local tests = {}

-- Creates a repository whose filter leaves a file when it runs.
local function create_trap()
  harness.commit({ file = "1\n", [".gitattributes"] = "file filter=trap\n" })
  harness.git("config", "filter.trap.clean", "touch " .. harness.folder .. "/trapped; cat")
  harness.write("file", "2\n")
end

local function was_trapped()
  return vim.loop.fs_stat(harness.folder .. "/trapped") ~= nil
end

function tests.RepositoryElsewhereIsInspectedUntilItIsTrusted()
  harness.configure({ trust = { harness.folder .. "/other", "~/work" } })
  create_trap()
  harness.open_status()
  harness.go_to("Not trusted: inspected only (:NEBGit trust); switched off: filter.trap.clean")
  harness.go_to("modified         file")
  harness.press("s")
  harness.wait_for_message("trust")
  harness.equal(false, was_trapped())
  harness.equal("", harness.git("diff", "--cached", "--name-only"))
  harness.press("R")
  harness.wait(function()
    return not window.state().is_running
  end)
  harness.equal(false, was_trapped())
  vim.cmd("NEBGit trust")
  harness.wait(function()
    return not vim.startswith(harness.lines()[2], "Not trusted")
  end, "the status of a trusted repository")
  harness.wait(was_trapped, "the filter of a trusted repository")
end

function tests.ListedFoldersAndTheDefaultAreTrusted()
  local root = harness.root
  harness.equal(false, trust.is_inspected(root))
  harness.configure({ trust = { harness.folder .. "/" } })
  harness.equal(false, trust.is_inspected(root))
  harness.equal(true, trust.is_inspected(harness.folder .. "2"))
  harness.configure({ trust = { root } })
  harness.equal(false, trust.is_inspected(root))
  harness.configure({ trust = {} })
  harness.equal(true, trust.is_inspected(root))
end

function tests.FunctionDecides()
  harness.configure({ trust = function(root)
    return root == harness.root
  end })
  harness.equal(false, trust.is_inspected(harness.root))
  harness.equal(true, trust.is_inspected("/elsewhere"))
end

function tests.InvalidSettingIsNamed()
  for _, value in ipairs({ "all", false }) do
    local ok, problem = pcall(harness.configure, { trust = value })
    harness.equal(false, ok)
    harness.contains("'trust' must be a function or table", problem)
  end
end

return tests
