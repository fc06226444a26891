-- Names of files, which may have any bytes, as text.
local M = {}

local utf8 = require("nebgit.utf8")

local function escaped(path, pattern)
  return '"' .. path:gsub(pattern, function(character)
    return ("\\%03o"):format(character:byte())
  end) .. '"'
end

-- Returns the path as git-diff(1) quotes it, if it has more than plain characters.
function M.quoted(path)
  return path:find("[^%w_./-]") and escaped(path, '[%c"\\\127-\255]') or path
end

-- Returns the path as it is shown: quoted only if it would not be readable in a line.
function M.shown(path)
  if not utf8.is_valid(path) then
    return M.quoted(path)
  end
  return path:find('[%c"\\]') and escaped(path, '[%c"\\]') or path
end

return M
