-- Messages with the header "Content-Length", as the Language Server Protocol frames them.
local M = {}

-- Returns the bytes of a message with this content.
function M.encode(content)
  return ("Content-Length: %d\r\n\r\n%s"):format(#content, content)
end

local Decoder = {}
Decoder.__index = Decoder

-- Returns a decoder. Chunks are joined only when a message may be complete, so large messages cost
-- no repeated copies.
function M.decoder()
  return setmetatable({ chunks = {}, bytes = "", position = 1, size = 0, needed = 1 }, Decoder)
end

-- Adds received bytes.
function Decoder:add(chunk)
  self.chunks[#self.chunks + 1] = chunk
  self.size = self.size + #chunk
end

-- Moves the chunks into `bytes`.
local function join(decoder)
  if #decoder.chunks > 0 then
    table.insert(decoder.chunks, 1, decoder.bytes:sub(decoder.position))
    decoder.bytes, decoder.position, decoder.chunks = table.concat(decoder.chunks), 1, {}
  end
end

-- Returns the content of the next message; nil if it is not complete. Raises an error if the
-- header is invalid.
function Decoder:next()
  if self.size < self.needed then
    return nil
  end
  join(self)
  local last = select(2, self.bytes:find("\r\n\r\n", self.position, true))
  if not last then
    self.needed = self.size + 1
    return nil
  end
  local header = self.bytes:sub(self.position, last)
  local length = tonumber(header:lower():match("content%-length: *(%d+)\r\n"))
  if not length then
    error("the header of a message is invalid: " .. header:sub(1, 80), 0)
  end
  self.needed = #header + length
  if self.size < self.needed then
    return nil
  end
  self.size = self.size - self.needed
  self.position = last + length + 1
  self.needed = 1
  return self.bytes:sub(last + 1, last + length)
end

return M
