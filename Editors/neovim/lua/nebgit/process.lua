-- Starts the program of the server, with its pipes.
local M = {}

local config = require("nebgit.config")
local framing = require("nebgit.framing")

local uv = vim.uv or vim.loop

-- The latest chunks of standard error that are kept for the message about a crash.
local most_diagnostics = 20

-- Closes a handle that may be closed already.
function M.close(handle)
  if handle and not handle:is_closing() then
    handle:close()
  end
end

local function read_diagnostics(process)
  process.stderr:read_start(function(_, chunk)
    if not chunk then
      M.close(process.stderr)
    else
      table.insert(process.diagnostics, chunk)
      if #process.diagnostics > most_diagnostics then
        table.remove(process.diagnostics, 1)
      end
    end
  end)
end

-- Starts the program. Returns the process, or nil and a sentence that says why not. Calls
-- on_exit(process) when it has ended, outside the main loop. Members of the process: `pid`,
-- `handle`, `stdin`, `stdout`, `decoder`, `diagnostics` (the end of its standard error) and, when
-- it has ended, `exit` ({status, signal}).
function M.start(on_exit)
  local command = config.options.command
  local process = {
    stdin = uv.new_pipe(false),
    stdout = uv.new_pipe(false),
    stderr = uv.new_pipe(false),
    decoder = framing.decoder(),
    diagnostics = {},
  }
  local arguments = vim.list_extend(vim.list_slice(command, 2), { "serve" })
  local stdio = { process.stdin, process.stdout, process.stderr }
  local settings = { args = arguments, stdio = stdio }
  local handle, pid = uv.spawn(command[1], settings, function(code, signal)
    process.exit = { code, signal }
    M.close(process.handle)
    on_exit(process)
  end)
  if not handle then
    for _, pipe in ipairs(stdio) do
      M.close(pipe)
    end
    local text = "cannot start '%s' (%s); install nebsc, or set 'command', see :help nebgit-command"
    return nil, text:format(command[1], tostring(pid))
  end
  process.handle, process.pid = handle, pid
  read_diagnostics(process)
  return process
end

return M
