-- The help file describes what exists, and its tags are up to date.
local harness = require("harness")

local folder = vim.fn.fnamemodify(vim.api.nvim_get_runtime_file("doc/nebgit.txt", false)[1], ":h")
local tests = {}

local function read(path)
  return table.concat(vim.fn.readfile(path), "\n")
end

-- Returns the sorted names of a table.
local function names(values)
  local result = vim.tbl_keys(values)
  table.sort(result)
  return result
end

function tests.EachCommandIsDescribed()
  local help = read(folder .. "/nebgit.txt")
  for _, name in ipairs(names(require("nebgit.commands").table)) do
    harness.contains(("*:NEBGit-%s*"):format(name), help)
  end
end

function tests.TagsAreUpToDate()
  local copy = harness.folder .. "/doc"
  vim.fn.mkdir(copy)
  vim.fn.writefile(vim.fn.readfile(folder .. "/nebgit.txt"), copy .. "/nebgit.txt")
  vim.cmd("helptags " .. vim.fn.fnameescape(copy))
  harness.equal(read(copy .. "/tags"), read(folder .. "/tags"))
end

return tests
