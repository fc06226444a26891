-- Buffers that show something and have no file.
local M = {}

local popup = require("nebgit.popup")

-- Returns a text that can be a line of a buffer: line feeds are shown as git quotes them.
function M.line(text)
  return (text:gsub("\n", "\\n"))
end

-- Returns the buffer with the name, created if it does not exist.
function M.buffer(name)
  for _, buffer in ipairs(vim.api.nvim_list_bufs()) do
    if vim.api.nvim_buf_get_name(buffer) == name then
      return buffer
    end
  end
  local buffer = vim.api.nvim_create_buf(false, true)
  vim.api.nvim_buf_set_name(buffer, name)
  vim.bo[buffer].buftype = "nofile"
  vim.bo[buffer].bufhidden = "wipe"
  vim.bo[buffer].swapfile = false
  vim.bo[buffer].modifiable = false
  vim.bo[buffer].undolevels = -1
  return buffer
end

-- Shows the buffer: in its window if it has one, or else in a new one that the command opens.
function M.show(buffer, command)
  local window = vim.fn.bufwinid(buffer)
  if window ~= -1 then
    vim.api.nvim_set_current_win(window)
    return
  end
  vim.cmd(command or "botright split")
  vim.api.nvim_win_set_buf(0, buffer)
  vim.wo.number = false
  vim.wo.relativenumber = false
  vim.wo.wrap = false
  vim.wo.spell = false
  vim.wo.foldenable = false
  -- A new window has them from the blame, and would scroll with it.
  vim.wo.scrollbind = false
  vim.wo.cursorbind = false
end

-- Replaces lines first to last (from 0, the end excluded) of the buffer.
function M.set_lines(buffer, first, last, lines)
  vim.bo[buffer].modifiable = true
  vim.api.nvim_buf_set_lines(buffer, first, last, false, lines)
  vim.bo[buffer].modifiable = false
  vim.bo[buffer].modified = false
end

-- Defines keys of the buffer: a list of {keys, function, description, modes}; modes is "n" by
-- default. The key "g?" lists them, and "q" closes that list, or else the window.
function M.map(buffer, keys)
  local lines = {}
  for _, key in ipairs(keys) do
    lines[#lines + 1] = ("%-6s %s"):format(key[1], key[3])
    vim.keymap.set(key[4] or "n", key[1], key[2], { buffer = buffer, nowait = true, desc = key[3] })
  end
  lines[#lines + 1] = "q      close the window"
  vim.keymap.set("n", "q", M.close, { buffer = buffer, nowait = true })
  vim.keymap.set("n", "g?", function()
    popup.show(lines, "nebgit")
  end, { buffer = buffer, nowait = true })
end

-- Closes the list of keys if it is shown, or else the window; the last window shows another buffer.
function M.close()
  if popup.close() then
    return
  end
  if not pcall(vim.api.nvim_win_close, 0, false) then
    vim.api.nvim_win_set_buf(0, vim.api.nvim_create_buf(true, false))
  end
end

return M
