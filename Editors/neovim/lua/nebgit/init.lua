-- The functions for a user's configuration, see :help nebgit.
local M = {}

-- Changes the settings, see :help nebgit-settings. Optional: without it the defaults hold.
function M.setup(options)
  require("nebgit.config").setup(options)
  if vim.v.vim_did_enter == 1 then
    require("nebgit.keys").define()
  end
end

return M
