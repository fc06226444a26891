-- The functions for a user's configuration, see :help nebgit.
local M = {}

-- Changes the settings, see :help nebgit-settings. Optional: without it the defaults hold.
function M.setup(options)
  require("nebgit.config").setup(options)
  if vim.v.vim_did_enter == 1 then
    require("nebgit.keys").define()
  end
end

-- Returns the branch and the changed lines of the buffer for a status line, such as
-- "main ↑1 +3 ~1 -2". Never waits.
function M.statusline()
  return require("nebgit.statusline").text()
end

return M
