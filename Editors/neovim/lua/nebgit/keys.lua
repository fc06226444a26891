-- The keys that run commands.
local M = {}

local config = require("nebgit.config")

-- Keys that also work on selected lines.
local for_lines = { stage_hunk = true, reset_hunk = true }

-- The keys that setup() defined, as lists of arguments of vim.keymap.del().
local defined = {}

local function define(mode, key, command)
  if vim.fn.maparg(key, mode) == "" then
    vim.keymap.set(mode, key, command, { desc = "nebgit: " .. command, silent = true })
    defined[#defined + 1] = { mode, key }
  end
end

-- Defines the keys of the settings. Keys that have a meaning already keep it.
function M.define()
  for _, arguments in ipairs(defined) do
    pcall(vim.keymap.del, unpack(arguments))
  end
  defined = {}
  for name, key in pairs(config.options.keys or {}) do
    if key then
      define("n", key, ("<Cmd>NEBGit %s<CR>"):format(name))
    end
    if key and for_lines[name] then
      define("x", key, (":NEBGit %s<CR>"):format(name))
    end
  end
end

return M
