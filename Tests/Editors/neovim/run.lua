-- Runs the tests in *_test.lua of this folder, in this Neovim, and exits:
--   NEBSC=build/debug/bin/nebsc nvim --headless -u NONE -i NONE -n \
--     -c 'luafile Tests/Editors/neovim/run.lua'
-- TESTS=TEXT limits them to those with the text in their name. A test file returns a table of
-- functions by name. Prints lines in the format of GoogleTest, which Tests/run.py reads.
local folder = vim.fn.fnamemodify(debug.getinfo(1, "S").source:sub(2), ":p:h")
local plug_in = vim.fn.fnamemodify(folder .. "/../../../Editors/neovim", ":p")

package.path = folder .. "/?.lua;" .. package.path
vim.opt.runtimepath:prepend(plug_in)
vim.opt.swapfile = false
vim.opt.more = false

local harness = require("harness")
harness.prepare_environment()
vim.cmd("runtime plugin/nebgit.lua")

local failed = 0

-- Prints a line. Begins a new one first, because the editor's own messages may end without.
local function say(text)
  io.stdout:write("\n", text, "\n")
  io.stdout:flush()
end

local function run(name, test)
  say("[ RUN      ] " .. name)
  local begin = vim.loop.hrtime()
  local ok, problem = xpcall(function()
    harness.set_up()
    test()
  end, debug.traceback)
  local was_clean, left = pcall(harness.tear_down)
  if not (ok and was_clean) then
    failed = failed + 1
    say(ok and left or problem)
    say(harness.messages())
  end
  local milliseconds = (vim.loop.hrtime() - begin) / 1e6
  local result = ok and was_clean and "       OK" or "  FAILED "
  say(("[%s ] %s (%d ms)"):format(result, name, milliseconds))
end

local function run_all()
  local files = vim.fn.glob(folder .. "/*_test.lua", true, true)
  table.sort(files)
  for _, file in ipairs(files) do
    local group = vim.fn.fnamemodify(file, ":t"):gsub("_test%.lua$", "")
    local tests = dofile(file)
    local names = vim.tbl_keys(tests)
    table.sort(names)
    for _, name in ipairs(names) do
      local full = group .. "." .. name
      if full:find(vim.env.TESTS or "", 1, true) then
        run(full, tests[name])
      end
    end
  end
  vim.cmd(failed == 0 and "qall!" or "cquit!")
end

-- After the start of the editor.
vim.schedule(function()
  local ok, problem = xpcall(run_all, debug.traceback)
  if not ok then
    say(problem)
    vim.cmd("cquit!")
  end
end)
