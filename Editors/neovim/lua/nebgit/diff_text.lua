-- Records of the request "changes" as the lines of a patch.
local M = {}

local names = require("nebgit.names")

local function header(record)
  local old, new = record.OriginalPath or record.Path, record.Path
  local old_name, new_name = names.quoted("a/" .. old), names.quoted("b/" .. new)
  local lines = { ("diff --git %s %s"):format(old_name, new_name) }
  if record.State == "added" then
    lines[#lines + 1] = "new file mode " .. (record.NewMode or "")
  elseif record.State == "deleted" then
    lines[#lines + 1] = "deleted file mode " .. (record.OldMode or "")
  elseif record.OldMode ~= record.NewMode then
    lines[#lines + 1] = "old mode " .. record.OldMode
    lines[#lines + 1] = "new mode " .. record.NewMode
  end
  if record.OriginalPath then
    lines[#lines + 1] = ("rename from %s"):format(names.quoted(old))
    lines[#lines + 1] = ("rename to %s"):format(names.quoted(new))
  end
  if record.IsBinary then
    lines[#lines + 1] = "Binary files differ"
  elseif #(record.Hunks or {}) > 0 then
    lines[#lines + 1] = "--- " .. (record.State == "added" and "/dev/null" or old_name)
    lines[#lines + 1] = "+++ " .. (record.State == "deleted" and "/dev/null" or new_name)
  end
  return lines
end

-- Returns the heading of a hunk.
function M.heading(hunk)
  local range = "@@ -%d,%d +%d,%d @@%s"
  local heading = hunk.Heading and " " .. hunk.Heading or ""
  return range:format(hunk.OldStart, hunk.OldCount, hunk.NewStart, hunk.NewCount, heading)
end

-- Returns the lines of one changed file.
function M.lines(record)
  local lines = header(record)
  for _, hunk in ipairs(record.Hunks or {}) do
    lines[#lines + 1] = M.heading(hunk)
    vim.list_extend(lines, hunk.Lines)
  end
  return lines
end

return M
