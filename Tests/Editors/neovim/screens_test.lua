-- The windows that docs/editors.md shows. NEB_WRITE_EDITORS_PAGE=1 updates the page.
local harness = require("harness")

local this_file = debug.getinfo(1, "S").source:sub(2)
local page = vim.fn.fnamemodify(this_file, ":p:h:h:h:h") .. "/docs/editors.md"

local tests = {}

-- Compares the lines of the window with the block of the page that follows the marker.
local function compare(name)
  local shown = vim.tbl_map(function(line)
    return (line:gsub(vim.pesc(harness.root), "/home/ann/demo"))
  end, harness.lines())
  local lines = vim.fn.readfile(page)
  local first
  for number, line in ipairs(lines) do
    if line == ("<!-- neovim: %s -->"):format(name) then
      first = number + 2
    end
  end
  local last = first
  while lines[last] ~= "```" do
    last = last + 1
  end
  if vim.env.NEB_WRITE_EDITORS_PAGE == "1" then
    local new = vim.list_slice(lines, 1, first - 1)
    vim.list_extend(new, shown)
    vim.list_extend(new, lines, last, #lines)
    vim.fn.writefile(new, page)
  else
    harness.equal(shown, vim.list_slice(lines, first, last - 1))
  end
end

-- Makes the repository of the page: a merged branch, and changes of all kinds.
local function prepare()
  local function commit(minute, ...)
    vim.env.GIT_COMMITTER_DATE = ("2026-03-04T05:%02d:00 +0000"):format(minute)
    harness.git("commit", "--quiet", "--allow-empty", "--message", ...)
  end
  harness.write("main.c", "int main() {\n  return 0;\n}\n")
  harness.write("notes.txt", "notes\n")
  harness.git("add", "--all")
  commit(1, "Begin")
  harness.git("tag", "v1.0")
  harness.git("checkout", "--quiet", "-b", "topic")
  commit(2, "Add a topic")
  harness.git("checkout", "--quiet", "main")
  commit(3, "Say hello")
  vim.env.GIT_COMMITTER_DATE = "2026-03-04T05:04:00 +0000"
  harness.git("merge", "--quiet", "--no-ff", "--message", "Merge the topic", "topic")
  vim.env.GIT_COMMITTER_DATE = "2026-03-04T05:06:07 +0000"
  harness.write("main.c", "int main() {\n  return 1;\n}\n")
  harness.write("new.txt", "new\n")
  harness.git("mv", "notes.txt", "docs.txt")
  harness.enter()
end

function tests.Status()
  prepare()
  vim.cmd("NEBGit status")
  harness.go_to("modified")
  harness.press("=")
  harness.go_to("+  return 1;")
  compare("status")
end

function tests.Log()
  prepare()
  vim.cmd("NEBGit log")
  harness.go_to("Begin")
  compare("log")
end

return tests
