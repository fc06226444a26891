-- Measures how long Neovim takes to respond while the plug-in works on a large repository:
--   NEBSC=build/release/bin/nebsc nvim --headless -u NONE -i NONE -n \
--     -c 'luafile Benchmarks/Editors/neovim.lua'
-- FILES=COUNT sets the number of changed files, COMMITS=COUNT that of commits (100,000 each).
-- Another editor runs the plug-in; this one moves its cursor, as a user would, again and again.
local uv = vim.loop
local top = vim.fn.fnamemodify(debug.getinfo(1, "S").source:sub(2), ":p:h:h:h")
local file_count = tonumber(vim.env.FILES) or 100000
local commit_count = tonumber(vim.env.COMMITS) or 100000
local folder = uv.fs_mkdtemp((vim.env.TMPDIR or "/tmp") .. "/nebgit-XXXXXX")
local root = folder .. "/repository"
local editor

local function run(arguments)
  local output = vim.fn.system(arguments)
  assert(vim.v.shell_error == 0, output)
  return output
end

local function git(...)
  return run({ "git", "-C", root, ... })
end

-- Runs Lua code in the editor, and returns its result.
local function lua(code, ...)
  return vim.fn.rpcrequest(editor, "nvim_exec_lua", code, { ... })
end

local function start_editor()
  editor = vim.fn.jobstart(
    { vim.v.progpath, "--embed", "--headless", "-u", "NONE", "-i", "NONE", "-n" },
    { rpc = true, cwd = root })
  lua([[
    local top, program = ...
    vim.opt.runtimepath:prepend(top .. "/Editors/neovim")
    vim.o.swapfile = false
    vim.o.hidden = true
    vim.cmd("runtime plugin/nebgit.lua")
    require("nebgit").setup({ command = { program } })
    vim.cmd("edit lines1000")
    vim.wait(10000, function()
      return vim.b.nebgit_changes
    end)
  ]], top, vim.fn.fnamemodify(vim.env.NEBSC or "nebsc", ":p"))
end

-- Presses keys in the editor until finished() is true, and prints the longest times. The processor
-- time is what the editor used from one key to the next.
local function measure(name, finished)
  local walls, begin, processor, last = {}, uv.hrtime(), 0, nil
  repeat
    assert(uv.hrtime() - begin < 120e9, "waited in vain for: " .. name)
    local start = uv.hrtime()
    local clock = lua("vim.cmd('normal! jk') return os.clock()")
    walls[#walls + 1] = (uv.hrtime() - start) / 1e6
    processor = math.max(processor, last and (clock - last) * 1000 or 0)
    local is_finished = finished()
    last = lua("return os.clock()")
  until is_finished
  table.sort(walls)
  local text = "%-36s %8.0f ms   key: median %5.2f ms, longest %6.1f ms, processor %6.1f ms\n"
  io.stdout:write(text:format(name, (uv.hrtime() - begin) / 1e6, walls[math.ceil(#walls / 2)],
    walls[#walls], processor))
end

-- Returns a condition: the expression is true in the editor.
local function condition(expression)
  return function()
    return lua("return (" .. expression .. ") and true or false")
  end
end

local function command(text)
  vim.fn.rpcrequest(editor, "nvim_command", text)
end

local status = "require('nebgit.status.window').state()"

local function measure_idle()
  local last = uv.now() + 2000
  measure("nothing", function()
    uv.update_time()
    return uv.now() > last
  end)
end

local function measure_status()
  command("NEBGit status")
  measure(("status of %d changed files"):format(file_count),
    condition(status .. " and " .. status .. ".has_loaded"))
  lua(status:gsub("^", "local state = ") .. [[
    state.has_loaded = false
    require("nebgit.repository").changed(state.root)
  ]])
  measure("status, again", condition(status .. ".has_loaded"))
  command("bwipeout")
end

local function measure_log()
  command("NEBGit log")
  measure(("first page of %d commits"):format(commit_count), condition("vim.fn.line('$') > 1"))
  measure("20 pages more", function()
    command("normal! G")
    -- The event of the cursor does not arrive while no key is typed.
    command("doautocmd CursorMoved")
    return lua("return vim.fn.line('$')") >= math.min(commit_count, 4000)
  end)
  lua("vim.api.nvim_win_set_cursor(0, { 500, 0 })")
  lua([[vim.api.nvim_feedkeys("\r", "xm", false)]])
  measure("a commit", condition("vim.fn.search('^+[0-9]', 'n') > 0"))
  command("only! | edit lines10000")
  measure("text of 10,000 lines in the index", condition("vim.b.nebgit_changes"))
  command("NEBGit blame")
  measure("blame of 10,000 lines", condition("vim.fn.getline('$') ~= ''"))
  command("only!")
end

-- Measures from a change of each file to its signs, the delay of the settings subtracted, and
-- compares with "git diff" of the saved file.
local function measure_signs(lines)
  local times, git_times = {}, {}
  command("edit! lines" .. lines)
  lua([[vim.wait(10000, function() return vim.b.nebgit_changes end)]])
  for round = 1, 15 do
    times[round] = lua([[
      local signs, text, line = require("nebgit.signs"), ...
      local delay = require("nebgit.config").options.signs.delay
      local begin = vim.loop.hrtime()
      vim.api.nvim_buf_set_lines(0, line - 1, line, true, { text })
      assert(vim.wait(10000, function()
        return signs.placed(vim.api.nvim_get_current_buf())[line]
      end, 1))
      return (vim.loop.hrtime() - begin) / 1e6 - delay
    ]], "changed " .. round, round * 50)
  end
  command("silent write")
  for round = 1, 15 do
    local begin = uv.hrtime()
    git("diff", "--unified=0", "--", "lines" .. lines)
    git_times[round] = (uv.hrtime() - begin) / 1e6
  end
  local begin
  git("add", "--", "lines" .. lines)
  begin = uv.hrtime()
  lua([[assert(vim.wait(10000, function()
    return #require("nebgit.changes").state(0).hunks == 0
  end, 1))]])
  local after_add = (uv.hrtime() - begin) / 1e6
  table.sort(times)
  table.sort(git_times)
  local format = "signs, %5d lines: median %.1f ms after a change (git diff %.1f ms), "
    .. "%.1f ms after git add\n"
  io.stdout:write(format:format(lines, times[8], git_times[8], after_add))
end

local function measure_commit()
  local head = git("rev-parse", "HEAD")
  command("edit lines1000")
  lua("vim.api.nvim_buf_set_lines(0, 0, 0, true, { 'first' })")
  command("silent write")
  lua("vim.api.nvim_win_set_cursor(0, { 1, 0 })")
  command("NEBGit stage_hunk")
  measure("staging of a hunk", condition("vim.b.nebgit_changes and vim.b.nebgit_changes[1] == 0"))
  command("NEBGit commit")
  measure("window of the message", condition("vim.bo.filetype == 'gitcommit'"))
  lua("vim.api.nvim_buf_set_lines(0, 0, 1, true, { 'Change a line' })")
  command("wq")
  measure("commit", function()
    return git("rev-parse", "HEAD") ~= head
  end)
end

local ok, problem = xpcall(function()
  run({ top .. "/Benchmarks/Editors/large_repository.sh", root, file_count, commit_count })
  start_editor()
  measure_idle()
  measure_log()
  measure_signs(1000)
  measure_signs(10000)
  measure_status()
  measure_commit()
end, debug.traceback)
if editor then
  vim.fn.jobstop(editor)
end
vim.fn.delete(folder, "rf")
if not ok then
  io.stderr:write(problem, "\n")
  vim.cmd("cquit!")
end
vim.cmd("qall!")
