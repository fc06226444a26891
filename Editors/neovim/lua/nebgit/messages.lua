-- Messages for the user.
local M = {}

local advice = require("nebgit.advice")

-- Returns whether vim.notify() is Neovim's own, and not that of a plug-in, which may be a table that
-- can be called.
local function is_built_in()
  return type(vim.notify) == "function"
    and vim.startswith(debug.getinfo(vim.notify, "S").source, "@vim/")
end

local function show(text, level)
  if level == vim.log.levels.ERROR and is_built_in() then
    -- Older versions print each line as an error of its own, and wait for a key after each.
    return vim.api.nvim_echo({ { "nebgit: " .. text, "ErrorMsg" } }, true, {})
  end
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

-- Failures of which only the output of git, a hook or the remote says what is wrong.
local with_output = {
  ["unknown"] = true,
  ["local-hook-refused"] = true,
  ["remote-hook-refused"] = true,
  ["remote-refused"] = true,
  ["remote-unsupported"] = true,
  ["merge-failed"] = true,
  ["submodule-failed"] = true,
  ["repository-damaged"] = true,
  ["configuration-broken"] = true,
  ["io-error"] = true,
  ["other-tools"] = true,
}

-- Returns what happened, and what to do, of a failure of requests.lua as one text.
function M.text_of(failure)
  local parts = { failure.message }
  if failure.text and with_output[failure.class] and failure.text ~= failure.message then
    parts[#parts + 1] = failure.text
  end
  local todo = advice[failure.class] or failure.advice
  if todo and todo ~= "" then
    parts[#parts + 1] = todo
  end
  return table.concat(parts, "\n")
end

-- Shows a failure of requests.lua, unless it was shown. A cancelled request is no failure for the
-- user.
function M.failure(failure)
  if failure.class ~= "cancelled" and not failure.is_shown then
    M.error(M.text_of(failure))
  end
end

return M
