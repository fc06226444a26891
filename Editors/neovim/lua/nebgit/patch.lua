-- Patches in the unified format, as git-apply(1) reads them.
local M = {}

local names = require("nebgit.names")
local text = require("nebgit.text")

-- Unchanged lines around a change, by which git finds its position.
local context = 3

-- Returns a patch of one file with the lines of hunks.
local function patch(path, lines)
  local header = { "--- " .. names.quoted("a/" .. path), "+++ " .. names.quoted("b/" .. path) }
  return table.concat(vim.list_extend(header, lines), "\n") .. "\n"
end

-- Returns the content with replacements made: a list of {hunk, lines}, in their order in the file.
-- hunk.old_count lines from (if it is 0, after) hunk.old_start become these lines. has_line_end:
-- whether a replacement at the end of the file has a line end there.
local function replaced(content, replacements, has_line_end)
  local old, old_has_line_end = text.split(content)
  local new, number, ends = {}, 1, old_has_line_end
  for _, replacement in ipairs(replacements) do
    local hunk, lines = replacement[1], replacement[2]
    local first = hunk.old_count == 0 and hunk.old_start + 1 or hunk.old_start
    vim.list_extend(new, old, number, first - 1)
    vim.list_extend(new, lines)
    number = first + hunk.old_count
    ends = number > #old and has_line_end or number <= #old and old_has_line_end
  end
  vim.list_extend(new, old, number, #old)
  return #new == 0 and "" or table.concat(new, "\n") .. (ends and "\n" or "")
end

-- Returns a patch of the content, see replaced().
function M.replacing(path, content, replacements, has_line_end)
  local new = replaced(content, replacements, has_line_end)
  local hunks = vim.diff(content, new, { ctxlen = context }):gsub("\n$", "")
  return patch(path, { hunks })
end

-- Returns the first line of a hunk in a patch whose hunks before it add offset lines. The patch is
-- applied to the old text or, if is_reverse, to the new one, where the start of the hunk is known.
-- The start of an empty range is the line before it.
local function heading(hunk, offset, is_reverse)
  local old_before = hunk.OldStart - (hunk.OldCount == 0 and 0 or 1)
  local new_before = old_before + offset
  if is_reverse then
    new_before = hunk.NewStart - (hunk.NewCount == 0 and 0 or 1)
    old_before = new_before - offset
  end
  return ("@@ -%d,%d +%d,%d @@"):format(
    old_before + (hunk.OldCount == 0 and 0 or 1), hunk.OldCount,
    new_before + (hunk.NewCount == 0 and 0 or 1), hunk.NewCount)
end

-- Returns a patch with some hunks, in their order, of a record of the request "changes", as if the
-- others did not exist: git searches a hunk where its heading says. is_reverse: whether the patch
-- is taken back.
function M.of_record(path, hunks, is_reverse)
  local lines, offset = {}, 0
  for _, hunk in ipairs(hunks) do
    lines[#lines + 1] = heading(hunk, offset, is_reverse)
    vim.list_extend(lines, hunk.Lines)
    offset = offset + hunk.NewCount - hunk.OldCount
  end
  return patch(path, lines)
end

return M
