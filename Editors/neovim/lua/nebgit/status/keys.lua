-- The keys of the status window.
local M = {}

local files = require("nebgit.status.files")
local messages = require("nebgit.messages")
local repository = require("nebgit.repository")
local scratch = require("nebgit.scratch")

local function window()
  return require("nebgit.status.window")
end

-- Returns the items of the lines of the selection or the cursor, without duplicates.
local function selected(state)
  local first, last = vim.fn.line("."), vim.fn.line(".")
  if vim.fn.mode():find("^[vV\22]") then
    first, last = math.min(first, vim.fn.line("v")), math.max(first, vim.fn.line("v"))
    vim.api.nvim_feedkeys(vim.api.nvim_replace_termcodes("<Esc>", true, false, true), "nx", false)
  end
  local items, seen = {}, {}
  for line = first, last do
    local item = state.items[line]
    if item and not seen[item] then
      seen[item] = true
      items[#items + 1] = item
    end
  end
  return items
end

-- Returns a function that calls action(state, items).
local function with_items(action)
  return function()
    local state = window().state()
    action(state, selected(state))
  end
end

-- Returns a function that calls a function of a module with the root.
local function with_root(module, method, ...)
  local arguments = { ... }
  return function()
    require(module)[method](window().state().root, unpack(arguments))
  end
end

-- Opens the file of the item in the window that was used before.
local function open_file(state, items)
  local item = items[1]
  local entry = item and (item.entry or item.path and item)
  if not entry then
    return
  end
  local line = item.kind == "hunk" and item.hunk.NewStart or nil
  vim.cmd("wincmd p")
  if window().state() then
    vim.cmd("leftabove split")
  end
  vim.cmd("edit " .. vim.fn.fnameescape(state.root .. "/" .. entry.path))
  if line then
    pcall(vim.api.nvim_win_set_cursor, 0, { line, 0 })
  end
end

local function toggle(_, items)
  if items[1] and items[1].kind ~= "operation" then
    window().toggle(items[1])
  else
    messages.info("no file here")
  end
end

-- Defines the keys in the buffer.
function M.define(buffer)
  scratch.map(buffer, {
    { "s", with_items(files.stage), "stage the file, hunk or section", { "n", "x" } },
    { "u", with_items(files.unstage), "unstage the file, hunk or section", { "n", "x" } },
    { "x", with_items(files.discard), "discard the changes; asks first", { "n", "x" } },
    { "=", with_items(toggle), "show or hide the changes of the file" },
    { "<CR>", with_items(open_file), "open the file" },
    { "cc", with_root("nebgit.commit_message", "open", {}), "commit what is staged" },
    { "ca", with_root("nebgit.commit_message", "open", { amend = true }), "amend the last commit" },
    { "P", with_root("nebgit.remotes", "push"), "push the branch" },
    { "p", with_root("nebgit.remotes", "pull"), "pull from the upstream branch" },
    { "f", with_root("nebgit.remotes", "fetch"), "fetch" },
    { "z", with_root("nebgit.stashes", "menu"), "stash, or use a stash" },
    { "b", with_root("nebgit.branches", "switch"), "switch to another branch, or create one" },
    { "rc", with_root("nebgit.operations", "finish", "continue"), "continue the merge or rebase" },
    { "rs", with_root("nebgit.operations", "finish", "skip"), "skip the current commit of it" },
    { "ra", with_root("nebgit.operations", "finish", "abort"), "abort it; asks first" },
    { "R", function()
      repository.changed(window().state().root)
    end, "read everything again" },
  })
end

return M
