-- The text of buffers as lines and as the bytes of their file.
local M = {}

-- The most bytes of an unsaved text that is sent; their conversion blocks the editor.
local most_sent = 1024 * 1024

-- Returns whether the text of the buffer is too large to be sent.
function M.is_large(buffer)
  local line_count = vim.api.nvim_buf_line_count(buffer)
  return vim.api.nvim_buf_get_offset(buffer, line_count) > most_sent
end

-- Splits the content of a file. Returns its lines without line ends, and whether the last one has
-- one. An empty file has no lines.
function M.split(content)
  if content == "" then
    return {}, true
  end
  local lines = vim.split(content, "\n", { plain = true })
  if lines[#lines] == "" then
    lines[#lines] = nil
    return lines, true
  end
  return lines, false
end

-- Returns the file encoding of the buffer if it differs from UTF-8, in which the editor keeps text.
local function other_encoding(buffer)
  local encoding = vim.bo[buffer].fileencoding
  return encoding ~= "" and encoding ~= "utf-8" and encoding or nil
end

-- Returns whether the last line of the buffer has a line end in its file.
function M.ends_with_line_end(buffer)
  local options = vim.bo[buffer]
  return options.endofline or (options.fixendofline and not options.binary)
end

-- Returns the lines of the buffer; a NUL is a line feed in them. An empty buffer has no lines.
function M.lines_of(buffer)
  local lines = vim.api.nvim_buf_get_lines(buffer, 0, -1, true)
  return #lines == 1 and lines[1] == "" and {} or lines
end

-- Returns the bytes that lines of the buffer have in the file, without line ends.
function M.encoded(buffer, lines)
  local encoding = other_encoding(buffer)
  return vim.tbl_map(function(line)
    line = encoding and vim.fn.iconv(line, "utf-8", encoding) or line
    return line:find("\n", 1, true) and line:gsub("\n", "\0") or line
  end, lines)
end

-- Returns the line end of the buffer's file.
function M.line_end(buffer)
  return ({ dos = "\r\n", mac = "\r" })[vim.bo[buffer].fileformat] or "\n"
end

-- Returns the bytes that ":write" would write.
function M.bytes_of(buffer)
  local lines, line_end = M.lines_of(buffer), M.line_end(buffer)
  local text = table.concat(M.encoded(buffer, lines), line_end)
  if #lines > 0 and M.ends_with_line_end(buffer) then
    text = text .. line_end
  end
  return vim.bo[buffer].bomb and not other_encoding(buffer) and "\239\187\191" .. text or text
end

-- Returns the lines that the buffer would have if the content were in its file: decoded, and
-- without carriage returns if all its lines end with one and the buffer's file has such line ends.
-- Returns nil for encodings with NULs, such as UTF-16, which the editor's functions cannot convert.
function M.as_in_buffer(buffer, content)
  local encoding = other_encoding(buffer)
  if encoding and content:find("%z") then
    return nil
  elseif encoding then
    content = vim.fn.iconv(content, encoding, "utf-8")
  elseif vim.bo[buffer].bomb then
    content = content:gsub("^\239\187\191", "")
  end
  if vim.bo[buffer].fileformat == "mac" then
    content = content:gsub("\r", "\n")
  end
  local lines = M.split(content)
  if vim.bo[buffer].fileformat == "dos" and M.has_carriage_returns(lines) then
    lines = vim.tbl_map(function(line)
      return line:sub(1, -2)
    end, lines)
  end
  return vim.tbl_map(function(line)
    return (line:gsub("%z", "\n"))
  end, lines)
end

-- Returns whether there are lines and all end with a carriage return.
function M.has_carriage_returns(lines)
  for _, line in ipairs(lines) do
    if line:sub(-1) ~= "\r" then
      return false
    end
  end
  return #lines > 0
end

return M
