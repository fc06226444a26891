-- Settings: their defaults, and setup(), which changes them.
local M = {}

M.defaults = {
  -- The program with its arguments; "serve" is added.
  command = { "nebsc" },
  signs = {
    enabled = true,
    max_lines = 20000, -- files with more lines get no signs
    delay = 30, -- milliseconds after the last change of the text
    text = { add = "+", change = "~", delete = "_", topdelete = "^", changedelete = "~" },
  },
  blame = {
    enabled = false, -- whether the blame of the current line is shown from the start
    delay = 150, -- milliseconds after the last movement of the cursor
  },
  status = {
    max_paths = 500, -- paths that a section shows until it is expanded
  },
  log = {
    page_size = 200, -- commits that are read at a time
    -- "topology", "date" or "author date": never shows a parent before a child, but git may have to
    -- read the whole history first. nil: as "git log" does by default.
    order = nil,
  },
  watch = {
    enabled = true, -- whether changes of other programs in the repository are seen at once
    working_tree = false, -- also those of files of the working copy
  },
  -- A list of folders, or a function of the root of a working copy: repositories elsewhere, or for
  -- which it returns false, are inspected. nil: all repositories are trusted.
  trust = nil,
  -- "merge", "rebase" or "fast-forward"; nil: as git's settings pull.ff,
  -- branch.NAME.rebase and pull.rebase say.
  pull = nil,
  -- false: no keys. A table replaces single ones, such as { next_hunk = "]c" }.
  keys = {
    next_hunk = "]h",
    previous_hunk = "[h",
    preview_hunk = "<leader>hp",
    stage_hunk = "<leader>hs",
    unstage_hunk = "<leader>hu",
    reset_hunk = "<leader>hr",
    blame_line = "<leader>hb",
    blame = "<leader>hB",
    status = "<leader>gs",
    commit = "<leader>gc",
    log = "<leader>gl",
  },
}

M.options = vim.deepcopy(M.defaults)

-- The settings that may have a value of another type than their default.
local other_types = {
  ["pull"] = { string = true },
  ["log.order"] = { string = true },
  ["keys"] = { boolean = true },
  ["trust"] = { ["function"] = true, table = true },
}
local free_tables = { ["command"] = true, ["trust"] = true }

-- Returns the first setting that does not exist or has a wrong type, as a sentence; or nil.
local function problem(options, defaults, prefix)
  for name, value in pairs(options) do
    local path = prefix .. tostring(name)
    local default = defaults[name]
    local allowed = other_types[path] or {}
    if default == nil and not other_types[path] then
      return ("'%s' is not a setting"):format(path)
    elseif type(value) ~= type(default) and not allowed[type(value)]
      and (value ~= false or path == "trust") then
      local names = vim.tbl_keys(allowed)
      table.sort(names)
      return ("'%s' must be a %s"):format(path, default and type(default)
        or table.concat(names, " or "))
    elseif type(value) == "table" and not free_tables[path] then
      local found = problem(value, default, path .. ".")
      if found then
        return found
      end
    end
  end
end

-- Changes the settings. Raises an error that names a setting that is invalid.
function M.setup(options)
  options = options or {}
  local found = problem(options, M.defaults, "")
  if found then
    error("nebgit: " .. found .. "; see :help nebgit-settings", 0)
  end
  M.options = vim.tbl_deep_extend("force", vim.deepcopy(M.defaults), options)
  if options.command then
    M.options.command = options.command
  end
end

return M
