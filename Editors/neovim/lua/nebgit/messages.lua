-- Messages for the user.
local M = {}

local function show(text, level)
  vim.notify("nebgit: " .. text, level, { title = "nebgit" })
end

function M.info(text)
  show(text, vim.log.levels.INFO)
end

function M.warn(text)
  show(text, vim.log.levels.WARN)
end

function M.error(text)
  show(text, vim.log.levels.ERROR)
end

-- Failures of which only git's or the hook's own output says what is wrong.
local with_output = {
  ["unknown"] = true,
  ["local-hook-refused"] = true,
  ["remote-hook-refused"] = true,
}

-- Returns what happened, and what to do, of a failure of requests.lua as one text.
function M.text_of(failure)
  local parts = { failure.message }
  if failure.text and with_output[failure.class] and failure.text ~= failure.message then
    parts[#parts + 1] = failure.text
  end
  if failure.advice and failure.advice ~= "" then
    parts[#parts + 1] = failure.advice
  end
  return table.concat(parts, "\n")
end

-- Shows a failure of requests.lua. A cancelled request is no failure for the user.
function M.failure(failure)
  if failure.class ~= "cancelled" then
    M.error(M.text_of(failure))
  end
end

return M
