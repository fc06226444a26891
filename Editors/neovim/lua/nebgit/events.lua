-- Connects the editor's events with the parts that show something.
local M = {}

-- Begins to handle events. The modules are loaded here, after the start of the editor.
function M.start(group)
  local blame_line = require("nebgit.blame_line")
  local changes = require("nebgit.changes")
  local repository = require("nebgit.repository")
  local signs = require("nebgit.signs")
  local watch = require("nebgit.watch")
  local function on(events, callback)
    vim.api.nvim_create_autocmd(events, { group = group, callback = callback })
  end

  require("nebgit.credentials")
  signs.define_highlights()
  on("ColorScheme", signs.define_highlights)
  on({ "BufReadPost", "BufNewFile", "BufWritePost", "BufFilePost" }, function(context)
    changes.attach(context.buf)
  end)
  on({ "BufDelete", "BufWipeout" }, watch.buffer_deleted)
  on({ "BufWinEnter", "BufEnter" }, function(context)
    changes.show(context.buf)
  end)
  on({ "CursorMoved", "InsertEnter", "InsertLeave", "BufLeave" }, blame_line.cursor_moved)
  on("BufWritePost", function(context)
    if vim.b[context.buf].nebgit_root then
      repository.changed(vim.b[context.buf].nebgit_root, { "workingTree" })
    end
  end)
  -- After a checkout, pull or the like, unmodified buffers show what is on the disk.
  repository.on_change(function(root)
    if root then
      vim.cmd("silent! checktime")
    end
  end)
  on({ "FocusGained", "ShellCmdPost", "TermLeave", "VimResume" }, function()
    watch.focus_gained()
  end)
  for _, buffer in ipairs(vim.api.nvim_list_bufs()) do
    if vim.api.nvim_buf_is_loaded(buffer) then
      changes.attach(buffer)
    end
  end
end

return M
