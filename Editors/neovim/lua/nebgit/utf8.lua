-- Checks text for valid UTF-8 (RFC 3629).
local M = {}

local function continues(byte)
  return byte and byte >= 0x80 and byte < 0xC0
end

-- Returns the length of the character at the position; nil if the bytes are invalid.
local function length_at(text, position)
  local a, b, c, d = text:byte(position, position + 3)
  if a < 0x80 then
    return 1
  elseif a >= 0xC2 and a < 0xE0 then
    return continues(b) and 2
  elseif a >= 0xE0 and a < 0xF0 then
    local low, high = a == 0xE0 and 0xA0 or 0x80, a == 0xED and 0xA0 or 0xC0
    return b and b >= low and b < high and continues(c) and 3
  elseif a >= 0xF0 and a < 0xF5 then
    local low, high = a == 0xF0 and 0x90 or 0x80, a == 0xF4 and 0x90 or 0xC0
    return b and b >= low and b < high and continues(c) and continues(d) and 4
  end
end

-- Returns whether the text is valid UTF-8.
function M.is_valid(text)
  local position = text:find("[\128-\255]")
  while position do
    local length = length_at(text, position)
    if not length then
      return false
    end
    position = text:find("[\128-\255]", position + length)
  end
  return true
end

return M
