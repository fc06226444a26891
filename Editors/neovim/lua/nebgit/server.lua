-- The server "nebsc serve": one process per editor, started by the first request. Requests are
-- sent when it has answered "initialize". After a crash, the next request starts it again.
local M = {}

local config = require("nebgit.config")
local framing = require("nebgit.framing")
local messages = require("nebgit.messages")
local program = require("nebgit.process")
local slices = require("nebgit.slices")

local uv = vim.uv or vim.loop

-- The editor stops reading while so many bytes wait to be decoded.
local most_waiting = 256 * 1024
-- The server is started again at most so often in a minute after a crash.
local most_crashes = 3

-- The process of process.lua; nil if it does not run. It also has `pending`, the requests without
-- response by id; `queue`, the ids of those that wait for the start, nil afterwards; and `progress`,
-- listeners by token.
local server = nil
local last_id = 0
local crashes = {}
local notification_handlers = {}
local request_handlers = {}
local start_handlers = {}
local end_handlers = {}

-- Calls handler(params, process) for notifications of the server with this method; the process
-- identifies the server.
function M.on_notification(method, handler)
  notification_handlers[method] = handler
end

-- Calls handler(params, reply, id, process) for requests of the server; reply(result) sends the
-- result.
function M.on_request(method, handler)
  request_handlers[method] = handler
end

-- Calls handler(capabilities) whenever the server has started.
function M.on_start(handler)
  start_handlers[#start_handlers + 1] = handler
end

-- Calls handler(process) whenever a server has ended.
function M.on_end(handler)
  end_handlers[#end_handlers + 1] = handler
end

local function write(process, message)
  message.jsonrpc = "2.0"
  if not process.stdin:is_closing() then
    process.stdin:write(framing.encode(vim.json.encode(message)))
  end
end

local function kill(process)
  if not process.handle:is_closing() then
    process.handle:kill("sigkill")
  end
end

-- Fails the requests for the reason, which was shown to the user if is_shown.
local function fail_all(process, reason, is_shown)
  local pending = process.pending
  process.pending, process.queue = {}, {}
  for _, request in pairs(pending) do
    request.callback({ message = reason, class = "server", is_shown = is_shown })
  end
end

-- Removes crashes of more than a minute ago, and returns how many are left.
local function recent_crashes()
  local now = uv.now()
  crashes = vim.tbl_filter(function(time)
    return now - time < 60000
  end, crashes)
  return #crashes
end

-- Calls the function; shows an error of it instead of losing what follows.
local function protected(callback, ...)
  local ok, problem = xpcall(callback, debug.traceback, ...)
  if not ok then
    messages.error(problem)
  end
end

local function ended(process, code, signal)
  if server == process then
    server = nil
  end
  process.has_ended = true
  program.close(process.stdin)
  for _, handler in ipairs(end_handlers) do
    protected(handler, process)
  end
  if process.is_stopping then
    fail_all(process, "the server was stopped")
    return
  end
  crashes[#crashes + 1] = uv.now()
  local how = signal ~= 0 and ("signal %d"):format(signal) or ("exit status %d"):format(code)
  local text = ("the server 'nebsc serve' ended unexpectedly (%s)"):format(how)
  local details = vim.trim(table.concat(process.diagnostics))
  messages.error(details == "" and text or text .. ":\n" .. details:sub(-1000))
  fail_all(process, text, true)
end

local function handle_response(process, message)
  local request = process.pending[message.id]
  process.pending[message.id] = nil
  if not request then
    return
  end
  if message.error then
    local problem = message.error
    request.callback({
      message = problem.message,
      class = problem.code == -32800 and "cancelled" or "protocol",
      code = problem.code,
      outcome = problem.data,
    })
  else
    request.callback(nil, message.result)
  end
end

local function handle_request(process, message)
  local handler = request_handlers[message.method]
  if not handler then
    local text = ("unknown method '%s'"):format(message.method)
    write(process, { id = message.id, error = { code = -32601, message = text } })
    return
  end
  handler(message.params or {}, function(result)
    write(process, { id = message.id, result = result == nil and vim.NIL or result })
  end, message.id, process)
end

local function handle_message(process, message)
  if message.method and message.id then
    handle_request(process, message)
  elseif message.method == "$/progress" then
    local listener = process.progress[message.params.token]
    if listener then
      listener(message.params.value)
    end
  elseif message.method then
    local handler = notification_handlers[message.method]
    if handler then
      handler(message.params or {}, process)
    end
  else
    handle_response(process, message)
  end
end

-- Handles one message. Returns whether there may be more.
local function step(process)
  local ok, content = pcall(process.decoder.next, process.decoder)
  if not ok then
    process.diagnostics = { content }
    kill(process)
    return false
  end
  if not content then
    return false
  end
  local luanil = { object = true, array = true }
  protected(handle_message, process, vim.json.decode(content, { luanil = luanil }))
  return true
end

local read

-- Handles the received messages in slices, then goes on reading.
local function pump(process)
  slices.run(function()
    return step(process)
  end, function()
    process.is_pumping = false
    if process.is_paused and not process.has_ended then
      process.is_paused = false
      read(process)
    end
    if process.output_ended and process.exit and not process.has_ended then
      ended(process, unpack(process.exit))
    end
  end)
end

local function start_pump(process)
  if not process.is_pumping then
    process.is_pumping = true
    vim.schedule(function()
      pump(process)
    end)
  end
end

function read(process)
  process.stdout:read_start(function(_, chunk)
    if chunk then
      process.decoder:add(chunk)
      if process.decoder.size > most_waiting and process.is_pumping then
        process.is_paused = true
        process.stdout:read_stop()
      end
    else
      process.output_ended = true
      program.close(process.stdout)
    end
    start_pump(process)
  end)
end

-- Sends the request with the id, unless it was cancelled meanwhile.
local function send(process, id)
  local request = process.pending[id]
  if request then
    request.was_sent = true
    write(process, { id = id, method = request.method, params = request.params })
  end
end

local function initialized(process, failure, result)
  if failure then
    process.diagnostics = { failure.message }
    kill(process)
    return
  elseif config.options.trust ~= nil and not (result.capabilities or {}).trust then
    process.diagnostics = { "this nebsc cannot inspect repositories; unset 'trust' or update it" }
    kill(process)
    return
  end
  process.capabilities = result.capabilities or {}
  process.information = result
  for _, handler in ipairs(start_handlers) do
    protected(handler, process.capabilities)
  end
  local queue = process.queue
  process.queue = nil
  for _, id in ipairs(queue) do
    send(process, id)
  end
end

local function start()
  if recent_crashes() >= most_crashes then
    return nil, "the server ended repeatedly; ':NEBGit restart' starts it again"
  end
  local process, problem = program.start(start_pump)
  if not process then
    return nil, problem
  end
  process.pending, process.queue, process.progress = {}, {}, {}
  server = process
  read(process)
  last_id = last_id + 1
  process.pending[last_id] = {
    callback = function(failure, result)
      initialized(process, failure, result)
    end,
  }
  local version = vim.version()
  write(process, {
    id = last_id,
    method = "initialize",
    params = {
      clientInfo = {
        name = "Neovim",
        version = ("%d.%d.%d"):format(version.major, version.minor, version.patch),
      },
      capabilities = { credentials = true },
    },
  })
  return process
end

-- Sends a request and calls callback(failure, result) once, on the main loop. The failure has
-- `message` and `class`: "server" if it cannot be started or ended, "cancelled", or "protocol";
-- with the `code` of JSON-RPC if the server refused, and `is_shown` if the user has seen it.
-- settings.progress(value) is called for $/progress with settings.token.
-- Returns a function that cancels the request.
function M.request(method, params, callback, settings)
  local process, problem = server, nil
  if not process then
    process, problem = start()
  end
  if not process then
    vim.schedule(function()
      callback({ message = problem, class = "server" })
    end)
    return function() end
  end
  last_id = last_id + 1
  local id, token = last_id, settings and settings.token
  local request = { method = method, params = params, changes = settings and settings.changes }
  if token then
    process.progress[token] = settings.progress
  end
  request.callback = function(failure, result)
    if token then
      process.progress[token] = nil
    end
    callback(failure, result)
  end
  process.pending[id] = request
  if process.queue then
    table.insert(process.queue, id)
  else
    send(process, id)
  end
  return function()
    M.cancel(process, id)
  end
end

-- Cancels the request; its callback gets the class "cancelled", unless it has finished.
function M.cancel(process, id)
  local request = process.pending[id]
  if not request then
    return
  end
  if request.was_sent then
    write(process, { method = "$/cancelRequest", params = { id = id } })
    return
  end
  process.pending[id] = nil
  vim.schedule(function()
    request.callback({ message = "the request was cancelled", class = "cancelled" })
  end)
end

-- Returns what the running server announced: the result of "initialize"; nil before it has.
function M.information()
  return server and server.information
end

-- Returns whether the running server announced the capability.
function M.can(capability)
  return server and server.capabilities and server.capabilities[capability] and true or false
end

-- Returns the id of the server's process; nil if it does not run.
function M.pid()
  return server and server.pid
end

local function changes_run()
  return server ~= nil
    and next(vim.tbl_filter(function(request)
      return request.changes
    end, server.pending)) ~= nil
end

-- Ends the server. Requests that change something are given time to finish first, because the
-- editor may exit right after a commit was confirmed; Ctrl-C ends the wait.
function M.stop()
  if not server then
    return
  end
  if changes_run() then
    print("nebgit: waiting for the end of a request (Ctrl-C cancels it)")
    vim.wait(60000, function()
      return not changes_run()
    end, 20)
  end
  local process = server
  if not process then
    return
  end
  server = nil
  process.is_stopping = true
  last_id = last_id + 1
  write(process, { id = last_id, method = "shutdown" })
  write(process, { method = "exit" })
end

-- Ends the server, and allows the next request to start it even after repeated crashes.
function M.restart()
  M.stop()
  crashes = {}
end

return M
