-- Hunks and patches as data.
local harness = require("harness")
local hunks = require("nebgit.hunks")
local patch = require("nebgit.patch")
local signs = require("nebgit.signs")

local tests = {}

local function between(old, new)
  return hunks.between(vim.split(old, ""), vim.split(new, ""))
end

-- Returns the signs as "LINE kind", lines from 1.
local function marks(old, new)
  return vim.tbl_map(function(mark)
    return ("%d %s"):format(mark[1] + 1, mark[2])
  end, signs.marks(between(old, new)))
end

function tests.SignsOfEachKindOfHunk()
  harness.equal({}, marks("abc", "abc"))
  harness.equal({ "2 add" }, marks("ac", "abc"))
  harness.equal({ "2 change" }, marks("abc", "axc"))
  harness.equal({ "1 delete" }, marks("abc", "ac"))
  harness.equal({ "1 topdelete" }, marks("abc", "bc"))
  harness.equal({ "2 changedelete" }, marks("abcd", "axd"))
  harness.equal({ "2 change", "3 add" }, marks("abc", "axyc"))
end

function tests.NextLineGoesRound()
  local found = between("abcdefg", "aXcdeYg")
  harness.equal(2, hunks.next_line(found, 1, 1))
  harness.equal(6, hunks.next_line(found, 2, 1))
  harness.equal(2, hunks.next_line(found, 6, 1))
  harness.equal(2, hunks.next_line(found, 6, -1))
  harness.equal(6, hunks.next_line(found, 2, -1))
  harness.equal(nil, hunks.next_line({}, 2, -1))
end

function tests.OldLineIsAtTheSamePosition()
  local old, new = "abcdefg", "xabdYYfg"
  local found, lines = between(old, new), {}
  for line = 1, #new do
    lines[line] = hunks.old_line(found, line)
  end
  harness.equal({ 0, 1, 2, 4, 5, 5, 6, 7 }, lines)
end

-- Applies all parts of the hunks between two texts, cut at each line, to the old text with git.
function tests.PartsOfHunksAddUpToTheWhole()
  local texts = { "", "a\n", "a\nb\nc\n", "b\n", "x\ny\nz\nb\n", "a\nq\nr\nb\nc\nd\n", "a\nb" }
  for _, old in ipairs(texts) do
    for _, new in ipairs(texts) do
      local old_lines = vim.split(old, "\n")
      local new_lines = vim.split(new, "\n")
      local found = hunks.between(old_lines, new_lines)
      for cut = 0, #new_lines do
        local total = { 0, 0 }
        for _, hunk in ipairs(found) do
          local first, last = hunks.range(hunk)
          local parts = { hunk }
          if cut >= first and cut < last then
            parts = { hunks.part(hunk, first, cut), hunks.part(hunk, cut + 1, last) }
          end
          for _, part in ipairs(parts) do
            total = { total[1] + part.old_count, total[2] + part.new_count }
          end
          harness.equal({ hunk.old_count, hunk.new_count }, {
            parts[1].old_count + (parts[2] and parts[2].old_count or 0),
            parts[1].new_count + (parts[2] and parts[2].new_count or 0),
          })
        end
        harness.equal(#new_lines - #old_lines, total[2] - total[1])
      end
    end
  end
end

-- Applies a patch of each name and content with git.
function tests.PatchesOfAllNamesAndContents()
  local names = {
    "plain", "a b", " end ", 'quote"', "back\\slash", "line\nend", "tab\tx", "b\228r", "ü",
  }
  local contents = {
    "", "a", "a\n", "a\nb\nc\n", "a\r\nb\r\n", "\228\n", "1\n2\n3\n4\n5\n6\n7\n8\n9",
  }
  for _, name in ipairs(names) do
    for _, content in ipairs(contents) do
      harness.write(name, content)
      harness.git("add", "--all")
      local text = require("nebgit.text")
      local lines, has_end = text.split(content)
      local hunk = { old_start = #lines, old_count = math.min(1, #lines) }
      local new = patch.replacing(name, content, { { hunk, { "new", "lines" } } }, has_end)
      harness.run({ "git", "-C", harness.root, "apply", "--whitespace=nowarn", "-" }, new)
      lines[math.max(1, #lines)] = "new\nlines"
      harness.equal(table.concat(lines, "\n") .. (has_end and "\n" or ""), harness.read(name))
    end
  end
end

return tests
