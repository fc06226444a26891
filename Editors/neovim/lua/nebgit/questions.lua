-- Questions to the user. The screen is drawn again after an answer: the list of the choices would
-- otherwise still be there, and Neovim would wait for <Enter> at the next message, even if the user
-- is typing the answer to the next question by then.
local M = {}

local function redrawn(callback)
  return function(...)
    vim.cmd("redraw")
    callback(...)
  end
end

-- As vim.ui.select().
function M.select(items, options, callback)
  vim.ui.select(items, options, redrawn(callback))
end

-- As vim.ui.input().
function M.input(options, callback)
  vim.ui.input(options, redrawn(callback))
end

-- What inputsecret() returns after <Esc>; an empty answer is an answer.
local declined = "\1declined\1"

-- Calls callback(text), or callback(nil) if the user declines. What is typed is not shown. The
-- options are those of vim.ui.input().
function M.secret(options, callback)
  local ok, text =
    pcall(vim.fn.inputsecret, { prompt = options.prompt, cancelreturn = declined })
  redrawn(callback)(ok and text ~= declined and text or nil)
end

return M
