-- Defines the command and the events; everything else is loaded when it is needed.
if vim.g.loaded_nebgit or vim.fn.has("nvim-0.7") == 0 then
  return
end
vim.g.loaded_nebgit = true

vim.api.nvim_create_user_command("NEBGit", function(context)
  require("nebgit.commands").run(context)
end, {
  nargs = "*",
  range = true,
  desc = "Source control",
  complete = function(lead, line)
    return require("nebgit.commands").complete(lead, line)
  end,
})

local group = vim.api.nvim_create_augroup("nebgit", {})

-- After the user's configuration, which may call setup().
local function start()
  require("nebgit.keys").define()
  require("nebgit.events").start(group)
end
if vim.v.vim_did_enter == 1 then
  start()
else
  vim.api.nvim_create_autocmd("VimEnter", { group = group, callback = start })
end

vim.api.nvim_create_autocmd("VimLeavePre", {
  group = group,
  callback = function()
    -- Without this test, the exit would load the module only to find that no server runs.
    if package.loaded["nebgit.server"] then
      require("nebgit.server").stop()
    end
  end,
})
