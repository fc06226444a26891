-- Messages as bytes: framing, Base64, UTF-8.
local harness = require("harness")
local base64 = require("nebgit.base64")
local framing = require("nebgit.framing")
local utf8 = require("nebgit.utf8")

local tests = {}

-- Returns the messages of the bytes, which are added in chunks of a size.
local function decoded(bytes, size)
  local decoder, messages = framing.decoder(), {}
  for position = 1, #bytes, size do
    decoder:add(bytes:sub(position, position + size - 1))
    local message = decoder:next()
    while message do
      table.insert(messages, message)
      message = decoder:next()
    end
  end
  return messages
end

function tests.MessagesInChunksOfEachSize()
  local bytes = framing.encode("{}") .. framing.encode("") .. framing.encode(("ä"):rep(50))
  for size = 1, #bytes do
    harness.equal({ "{}", "", ("ä"):rep(50) }, decoded(bytes, size))
  end
end

function tests.OtherHeaderFieldsAreIgnored()
  local bytes = "Content-Type: x; charset=utf-8\r\ncontent-length: 2\r\n\r\n{}"
  harness.equal({ "{}" }, decoded(bytes, 7))
end

function tests.HeaderWithoutLengthIsAnError()
  local decoder = framing.decoder()
  decoder:add("Content-Type: x\r\n\r\n")
  local ok, problem = pcall(decoder.next, decoder)
  harness.equal(false, ok)
  harness.contains("Content-Type: x", problem)
end

function tests.Base64OfAllBytes()
  local all = {}
  for byte = 0, 255 do
    all[#all + 1] = string.char(byte)
  end
  for length = 0, 256 do
    local bytes = table.concat(all, "", 1, length)
    harness.equal(bytes, base64.decode(base64.encode(bytes)))
  end
  harness.equal("", base64.encode(""))
  harness.equal("Zg==", base64.encode("f"))
  harness.equal("Zm8=", base64.encode("fo"))
  harness.equal("Zm9vYmFy", base64.encode("foobar"))
end

function tests.UTF8()
  local valid = { "", "a\0b", "ä", "€", "😀", "\239\191\191", "\237\159\191", "\244\143\191\191" }
  for _, text in ipairs(valid) do
    harness.equal({ text, true }, { text, utf8.is_valid(text) })
  end
  local invalid = {
    "\128", "\192\128", "\193\191", "\195", "\195a", "\224\128\128", "\226\130", "\237\160\128",
    "\240\128\128\128", "\244\144\128\128", "\245\128\128\128", "a\255",
  }
  for _, text in ipairs(invalid) do
    harness.equal({ text, false }, { text, utf8.is_valid(text) })
  end
end

return tests
