-- Base64 of RFC 4648, in which the server sends bytes that are not UTF-8.
local M = {}

local alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"
local values = {}
for index = 1, #alphabet do
  values[alphabet:byte(index)] = index - 1
end

local function digit(value)
  return alphabet:sub(value + 1, value + 1)
end

-- Returns the text for the bytes.
function M.encode(bytes)
  local parts = {}
  for index = 1, #bytes, 3 do
    local a, b, c = bytes:byte(index, index + 2)
    local sum = a * 65536 + (b or 0) * 256 + (c or 0)
    parts[#parts + 1] = digit(math.floor(sum / 262144))
      .. digit(math.floor(sum / 4096) % 64)
      .. (b and digit(math.floor(sum / 64) % 64) or "=")
      .. (c and digit(sum % 64) or "=")
  end
  return table.concat(parts)
end

-- Returns the bytes of the text, which must be valid.
function M.decode(text)
  local parts = {}
  for index = 1, #text, 4 do
    local a, b, c, d = text:byte(index, index + 3)
    local sum = values[a] * 262144 + values[b] * 4096 + (values[c] or 0) * 64 + (values[d] or 0)
    local bytes = string.char(math.floor(sum / 65536), math.floor(sum / 256) % 256, sum % 256)
    parts[#parts + 1] = bytes:sub(1, not values[c] and 1 or not values[d] and 2 or 3)
  end
  return table.concat(parts)
end

return M
