-- Long work in short slices, between which the editor handles keys.
local M = {}

local uv = vim.uv or vim.loop

-- The longest time of a slice in nanoseconds; a step may exceed it. At 60 frames per second, a key
-- may wait 16 milliseconds.
M.budget = 5e6

-- Calls step() until it returns false, as long as a slice may take; then goes on in later slices.
-- Calls done(), if given, after the last step. Runs the first slice at once. step() and done() may
-- use all functions of the editor.
function M.run(step, done)
  local begin = uv.hrtime()
  repeat
    if not step() then
      if done then
        done()
      end
      return
    end
  until uv.hrtime() - begin > M.budget
  -- A timer, because the editor runs all scheduled functions before it reads the next key.
  vim.defer_fn(function()
    M.run(step, done)
  end, 1)
end

-- Calls handle(item, index) for each item of the list. Stops if is_current() returns false.
function M.each(list, handle, is_current, done)
  local index = 0
  M.run(function()
    if is_current and not is_current() then
      done = nil
      return false
    end
    index = index + 1
    if index > #list then
      return false
    end
    handle(list[index], index)
    return true
  end, function()
    if done then
      done()
    end
  end)
end

return M
