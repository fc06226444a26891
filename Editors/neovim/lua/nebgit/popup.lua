-- A floating window beside the cursor.
local M = {}

local window

-- Closes the window. Returns whether it was open.
function M.close()
  local is_open = window ~= nil and vim.api.nvim_win_is_valid(window)
  if is_open then
    vim.api.nvim_win_close(window, true)
  end
  window = nil
  return is_open
end

-- Returns the size of a window for the lines.
local function size(lines)
  local width = 20
  for _, line in ipairs(lines) do
    width = math.max(width, vim.fn.strdisplaywidth(line))
  end
  return math.min(width, vim.o.columns - 4), math.max(1, math.min(#lines, vim.o.lines - 6))
end

-- Shows the lines with the file type's colours, and returns the window. It closes when the cursor
-- moves; if it is shown again while it is open, it gets the cursor instead, and "q" closes it.
function M.show(lines, filetype)
  if window and vim.api.nvim_win_is_valid(window) then
    vim.api.nvim_set_current_win(window)
    return window
  end
  local buffer = vim.api.nvim_create_buf(false, true)
  vim.api.nvim_buf_set_lines(buffer, 0, -1, true, lines)
  vim.bo[buffer].bufhidden = "wipe"
  vim.bo[buffer].filetype = filetype
  vim.bo[buffer].modifiable = false
  local width, height = size(lines)
  window = vim.api.nvim_open_win(buffer, false, {
    relative = "cursor", row = 1, col = 0, width = width, height = height,
    style = "minimal", border = "rounded",
  })
  vim.keymap.set("n", "q", M.close, { buffer = buffer, nowait = true })
  local shown = window
  -- Scheduled, because the event for an earlier movement may still come.
  vim.schedule(function()
    vim.api.nvim_create_autocmd({ "CursorMoved", "InsertEnter", "BufLeave" }, {
      buffer = vim.api.nvim_win_is_valid(shown) and vim.api.nvim_get_current_buf() or nil,
      callback = function()
        if vim.api.nvim_get_current_win() == shown then
          return false
        end
        if window == shown then
          M.close()
        end
        return true
      end,
    })
  end)
  return window
end

return M
