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

-- Returns what happened, and what to do, of a failure of requests.lua as one text.
function M.text_of(failure)
  if failure.advice and failure.advice ~= "" then
    return failure.message .. "\n" .. failure.advice
  end
  return failure.message
end

-- Shows a failure of requests.lua. A cancelled request is no failure for the user.
function M.failure(failure)
  if failure.class ~= "cancelled" then
    M.error(M.text_of(failure))
  end
end

return M
