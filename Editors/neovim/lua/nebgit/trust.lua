-- Which repositories the user trusts. In others, git runs none of the programs that they name, and
-- requests that change something are refused: the server inspects them.
local M = {}

local config = require("nebgit.config")

-- The roots that were trusted since the editor started.
local trusted = {}

local function is_below(root, folder)
  folder = vim.fn.resolve(vim.fn.fnamemodify(vim.fn.expand(folder), ":p")):gsub("/+$", "")
  return root == folder or vim.startswith(root, folder .. "/")
end

-- Returns whether the working copy at root is only inspected.
function M.is_inspected(root)
  local setting = config.options.trust
  if setting == nil or trusted[root] then
    return false
  elseif type(setting) == "function" then
    return not setting(root)
  end
  for _, folder in ipairs(setting) do
    if is_below(root, folder) then
      return false
    end
  end
  return true
end

-- Trusts the working copy at root until the editor exits.
function M.trust(root)
  local messages = require("nebgit.messages")
  if not M.is_inspected(root) then
    return messages.info("the repository is trusted already")
  end
  trusted[root] = true
  require("nebgit.repository").changed(root)
  messages.info("trusted until Neovim exits; the setting 'trust' keeps it")
end

return M
