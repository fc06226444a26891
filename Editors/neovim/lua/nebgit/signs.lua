-- Signs beside changed lines.
local M = {}

local changes = require("nebgit.changes")
local config = require("nebgit.config")
local slices = require("nebgit.slices")

local namespace = vim.api.nvim_create_namespace("nebgit-signs")

local groups = {
  add = "NEBGitAdd",
  change = "NEBGitChange",
  delete = "NEBGitDelete",
  topdelete = "NEBGitDelete",
  changedelete = "NEBGitChange",
}

-- The latest list of marks of each buffer; drawing of an older one stops. Its `kinds` has the kind
-- of each mark by the id of its extmark.
local current = {}

-- Returns the kind of sign for each changed line, as a list of {line, kind}, lines from 0.
function M.marks(hunks)
  local marks = {}
  for _, hunk in ipairs(hunks) do
    if hunk.new_count == 0 and hunk.new_start == 0 then
      marks[#marks + 1] = { 0, "topdelete" }
    elseif hunk.new_count == 0 then
      marks[#marks + 1] = { hunk.new_start - 1, "delete" }
    end
    for offset = 0, hunk.new_count - 1 do
      local is_last = offset == hunk.new_count - 1
      local kind = offset >= hunk.old_count and "add"
        or is_last and hunk.old_count > hunk.new_count and "changedelete"
        or "change"
      marks[#marks + 1] = { hunk.new_start - 1 + offset, kind }
    end
  end
  return marks
end

-- Returns the kind of the sign at each line of the buffer that has one, lines from 1.
function M.placed(buffer)
  local result = {}
  for _, mark in ipairs(vim.api.nvim_buf_get_extmarks(buffer, namespace, 0, -1, {})) do
    result[mark[2] + 1] = current[buffer].kinds[mark[1]]
  end
  return result
end

local function place(buffer, marks, mark)
  local line, kind = mark[1], mark[2]
  if line < vim.api.nvim_buf_line_count(buffer) then
    local id = vim.api.nvim_buf_set_extmark(buffer, namespace, line, 0, {
      sign_text = config.options.signs.text[kind],
      sign_hl_group = groups[kind],
      priority = 6,
    })
    marks.kinds[id] = kind
  end
end

local function draw(buffer, hunks)
  local marks = M.marks(hunks)
  marks.kinds = {}
  current[buffer] = marks
  vim.api.nvim_buf_clear_namespace(buffer, namespace, 0, -1)
  slices.each(marks, function(mark)
    place(buffer, marks, mark)
  end, function()
    return current[buffer] == marks and vim.api.nvim_buf_is_loaded(buffer)
  end)
end

changes.on_update(function(buffer, hunks)
  draw(buffer, config.options.signs.enabled and hunks or {})
end)

-- Defines the colours; a colour scheme or the user may have defined others.
function M.define_highlights()
  local links = {
    NEBGitAdd = "DiffAdd",
    NEBGitChange = "DiffChange",
    NEBGitDelete = "DiffDelete",
    NEBGitBlame = "Comment",
  }
  for name, target in pairs(links) do
    vim.api.nvim_set_hl(0, name, { link = target, default = true })
  end
end

return M
