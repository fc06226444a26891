-- Changed lines between two texts: what vim.diff() returns, and what the cursor is in.
local M = {}

-- Returns the hunks between lists of lines, each with `old_start`, `old_count`, `new_start`,
-- `new_count`. The start of an empty range is the line before it.
function M.between(old, new)
  local function joined(lines)
    return #lines == 0 and "" or table.concat(lines, "\n") .. "\n"
  end
  return vim.tbl_map(function(range)
    local old_start, old_count, new_start, new_count = unpack(range)
    return {
      old_start = old_start, old_count = old_count, new_start = new_start, new_count = new_count,
    }
  end, vim.diff(joined(old), joined(new), { result_type = "indices" }))
end

-- Returns the first and last line of the hunk in the new text; of a deletion the line before it.
function M.range(hunk)
  local first = math.max(1, hunk.new_start)
  return first, math.max(first, hunk.new_start + hunk.new_count - 1)
end

-- Returns the hunk at the line; nil without a hunk there. A deletion at the very top is at line 1.
function M.at(hunks, line)
  for _, hunk in ipairs(hunks) do
    local first, last = M.range(hunk)
    if line >= first and line <= last then
      return hunk
    end
  end
end

-- Returns the first line of the hunk that follows the line, or precedes it if direction is -1; at
-- the end the search goes on from the other end. Nil if there are no hunks.
function M.next_line(hunks, line, direction)
  local best, wrapped
  for _, hunk in ipairs(hunks) do
    local first = M.range(hunk)
    local distance = (first - line) * direction
    if distance > 0 and (not best or distance < (best - line) * direction) then
      best = first
    end
    if not wrapped or (first - wrapped) * direction < 0 then
      wrapped = first
    end
  end
  return best or wrapped
end

-- Returns the part of the hunk that lies in lines first to last of the new text. The n-th old line
-- belongs to the n-th new line; old lines that are left belong to the last one.
function M.part(hunk, first, last)
  if hunk.new_count == 0 then
    return hunk
  end
  local from = math.max(first, hunk.new_start) - hunk.new_start
  local to = math.min(last, hunk.new_start + hunk.new_count - 1) - hunk.new_start
  local is_end = to == hunk.new_count - 1
  local old_from = math.min(from, hunk.old_count)
  local old_to = is_end and hunk.old_count or math.min(to + 1, hunk.old_count)
  local old_count = old_to - old_from
  local old_start = hunk.old_start + old_from
  if hunk.old_count == 0 then
    old_start = hunk.old_start
  elseif old_count == 0 then
    old_start = old_start - 1
  end
  return {
    old_start = old_start,
    old_count = old_count,
    new_start = hunk.new_start + from,
    new_count = to - from + 1,
  }
end

-- Returns the line of the old text at the position of a line of the new one.
function M.old_line(hunks, line)
  local offset = 0
  for _, hunk in ipairs(hunks) do
    local first, last = M.range(hunk)
    if line < first then
      break
    elseif hunk.new_count > 0 and line <= last then
      return hunk.old_count == 0 and hunk.old_start
        or hunk.old_start + math.min(line - first, hunk.old_count - 1)
    end
    if line > last or hunk.new_start == 0 then
      offset = offset + hunk.old_count - hunk.new_count
    end
  end
  return line + offset
end

-- Returns the number of added, changed and removed lines.
function M.counts(hunks)
  local added, changed, removed = 0, 0, 0
  for _, hunk in ipairs(hunks) do
    local common = math.min(hunk.old_count, hunk.new_count)
    changed = changed + common
    added = added + hunk.new_count - common
    removed = removed + hunk.old_count - common
  end
  return added, changed, removed
end

return M
