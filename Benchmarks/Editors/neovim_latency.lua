-- Measures how long the editor takes to respond while the plug-in works on a large repository:
--   NEBSC=build/release/bin/nebsc nvim --headless -u NONE -i NONE -n \
--     -c 'luafile Benchmarks/Editors/neovim_latency.lua'
-- FILES=COUNT sets the number of files (100,000). Another editor runs the plug-in; this one moves
-- its cursor, as a user would, again and again, and prints the longest times until it had moved.
local uv = vim.loop
local top = vim.fn.fnamemodify(debug.getinfo(1, "S").source:sub(2), ":p:h:h:h")
local file_count = tonumber(vim.env.FILES) or 100000
local folder = uv.fs_mkdtemp((vim.env.TMPDIR or "/tmp") .. "/nebgit-XXXXXX")
local root = folder .. "/repository"

local function run(arguments, input)
  local output = input and vim.fn.system(arguments, input) or vim.fn.system(arguments)
  assert(vim.v.shell_error == 0, output)
end

-- Creates a repository in which each file is staged and changed since.
local function create_repository()
  run({ "git", "init", "--quiet", "--initial-branch=main", root })
  run({ "git", "-C", root, "config", "user.email", "ann@example.org" })
  run({ "git", "-C", root, "config", "user.name", "Ann Example" })
  for number = 1, file_count do
    local directory = ("%s/d%03d"):format(root, number / 500)
    if number % 500 == 0 or number == 1 then
      uv.fs_mkdir(directory, 448)
    end
    local file = assert(io.open(("%s/f%06d"):format(directory, number), "w"))
    file:write(number, "\n")
    file:close()
  end
  run({ "git", "-C", root, "add", "--all" })
  run({ "git", "-C", root, "commit", "--quiet", "--message", "Begin" })
  local change = 'cd "$1" && find . -name "f*" | xargs sh -c \'for f; do echo x >>"$f"; done\' sh'
  run({ "sh", "-c", change, "sh", root })
end

local function start_editor()
  local editor = vim.fn.jobstart(
    { vim.v.progpath, "--embed", "--headless", "-u", "NONE", "-i", "NONE", "-n" },
    { rpc = true, cwd = root })
  local setup = [[
    local top, program, file = ...
    vim.opt.runtimepath:prepend(top .. "/Editors/neovim")
    vim.o.swapfile = false
    vim.cmd("runtime plugin/nebgit.lua")
    require("nebgit").setup({ command = { program } })
    vim.cmd("edit " .. file)
    vim.wait(10000, function()
      return vim.b.nebgit_changes
    end)
  ]]
  local arguments = { top, vim.fn.fnamemodify(vim.env.NEBSC or "nebsc", ":p"), "d000/f000001" }
  vim.fn.rpcrequest(editor, "nvim_exec_lua", setup, arguments)
  return editor
end

-- Moves the editor's cursor until the expression is true there; prints the times.
local function measure(name, editor, finished)
  local times, begin = {}, uv.hrtime()
  repeat
    local start = uv.hrtime()
    vim.fn.rpcrequest(editor, "nvim_command", "normal! jk")
    times[#times + 1] = (uv.hrtime() - start) / 1e6
  until vim.fn.rpcrequest(editor, "nvim_exec_lua", "return " .. finished, {})
  local seconds = (uv.hrtime() - begin) / 1e9
  table.sort(times)
  local text = "%-40s %6.1f s, %6d keys: median %.2f ms, 99.9 %% %.1f ms, longest %.1f ms\n"
  io.stdout:write(text:format(name, seconds, #times, times[math.ceil(#times / 2)],
    times[math.ceil(#times * 0.999)], times[#times]))
end

create_repository()
local editor = start_editor()
local window = "require('nebgit.status.window')"
vim.fn.rpcrequest(editor, "nvim_exec_lua", "Until = vim.loop.now() + 5000", {})
measure("idle", editor, "vim.loop.now() > Until")
vim.fn.rpcrequest(editor, "nvim_command", "NEBGit status")
measure(("status of %d changed files"):format(file_count), editor,
  window .. ".state() and " .. window .. ".state().has_loaded or false")
vim.fn.rpcrequest(editor, "nvim_exec_lua", [[
  local state = require("nebgit.status.window").state()
  state.has_loaded = false
  require("nebgit.repository").changed(state.root)
]], {})
measure("the same again", editor, window .. ".state().has_loaded or false")
vim.fn.jobstop(editor)
vim.fn.delete(folder, "rf")
vim.cmd("qall!")
