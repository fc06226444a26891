-- The working copies of files, and notifications of their changes.
local M = {}

local uv = vim.uv or vim.loop

local handlers = {}

-- Calls callback(root, path) on the main loop: the top of the working copy that contains the file,
-- and its path from there, symbolic links resolved; nil if it is in no working copy.
function M.find(file, callback)
  local finish = vim.schedule_wrap(callback)
  local function look_in(folder, real)
    uv.fs_lstat(folder .. "/.git", function(_, found)
      if found then
        local path = real:sub(#folder + 2)
        return finish(folder, path)
      end
      local parent = folder:match("^(.+)/[^/]*$")
      if parent then
        look_in(parent, real)
      else
        finish(nil)
      end
    end)
  end
  local folder, name = file:match("^(.*)/([^/]*)$")
  uv.fs_realpath(file, function(_, real)
    if real then
      return look_in(real, real)
    end
    -- A new file.
    uv.fs_realpath(folder or ".", function(_, real_folder)
      if real_folder then
        look_in(real_folder, real_folder .. "/" .. (name or file))
      else
        finish(nil)
      end
    end)
  end)
end

-- Calls callback(root, path) for the file of the current buffer or, without one, the current
-- folder, for which the path is "".
function M.find_current(callback)
  local buffer = vim.api.nvim_get_current_buf()
  if vim.b[buffer].nebgit_root then
    return callback(vim.b[buffer].nebgit_root, vim.b[buffer].nebgit_path or "")
  end
  local name = vim.api.nvim_buf_get_name(buffer)
  if vim.bo[buffer].buftype == "" and name ~= "" then
    M.find(name, callback)
  else
    M.find(uv.cwd(), callback)
  end
end

-- Calls handler(root, changes) when a working copy or its repository may have changed. changes is a
-- set of names: "head", "references", "index", "stash", "operation", "configuration" and
-- "workingTree".
function M.on_change(handler)
  handlers[#handlers + 1] = handler
end

local everything = {
  head = true, references = true, index = true, stash = true, operation = true,
  configuration = true, workingTree = true,
}

-- Reports a change; without a list of changes, everything may have changed.
function M.changed(root, changes)
  local set = everything
  if changes then
    set = {}
    for _, name in ipairs(changes) do
      set[name] = true
    end
  end
  for _, handler in ipairs(handlers) do
    handler(root, set)
  end
end

return M
