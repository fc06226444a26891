-- Times of commits as text.
local M = {}

local units = {
  { 365 * 86400, "year" },
  { 30 * 86400, "month" },
  { 7 * 86400, "week" },
  { 86400, "day" },
  { 3600, "hour" },
  { 60, "minute" },
}

-- Returns how long ago the time (seconds since 1970) was, such as "3 days ago".
function M.ago(time, now)
  local seconds = (now or os.time()) - time
  for _, unit in ipairs(units) do
    local count = math.floor(seconds / unit[1])
    if count >= 1 then
      return ("%d %s%s ago"):format(count, unit[2], count == 1 and "" or "s")
    end
  end
  return seconds < 0 and "in the future" or "just now"
end

-- Returns the date and time in the time zone of the author; offset in minutes.
function M.full(time, offset)
  local sign = offset < 0 and "-" or "+"
  local zone = ("%s%02d%02d"):format(sign, math.floor(math.abs(offset) / 60), math.abs(offset) % 60)
  return os.date("!%Y-%m-%d %H:%M:%S ", time + offset * 60) .. zone
end

-- Returns the date in the time zone of the author.
function M.date(time, offset)
  return os.date("!%Y-%m-%d", time + offset * 60)
end

return M
