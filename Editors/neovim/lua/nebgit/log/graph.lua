-- The graph beside a list of commits, drawn from top to bottom as the commits arrive.
local M = {}

local Graph = {}
Graph.__index = Graph

-- Returns a graph without commits.
function M.new()
  -- By lane, the id of the commit that it leads to; false if it is free. shown: the ids of commits
  -- that were added.
  return setmetatable({ lanes = {}, shown = {} }, Graph)
end

-- Returns a line with the character of each lane, joined from lane first to lane last.
local function row(lanes, characters, first, last)
  local cells = {}
  for lane = 1, math.max(#lanes, last or 0) do
    local is_joined = first and lane >= first and lane <= last
    local plain = is_joined and (lanes[lane] and "┼" or "─") or (lanes[lane] and "│" or " ")
    local link = is_joined and lane < last and "─" or " "
    cells[lane] = (characters[lane] or plain) .. link
  end
  return (table.concat(cells):gsub(" +$", ""))
end

-- Returns the lane that leads to the id; otherwise the first free one after the lane, taken.
local function take_lane(lanes, id, after)
  for lane, expected in ipairs(lanes) do
    if expected == id then
      return lane, false
    end
  end
  local free = after + 1
  while lanes[free] do
    free = free + 1
  end
  for lane = #lanes + 1, free do
    lanes[lane] = false
  end
  lanes[free] = id
  return free, true
end

local function trim(lanes)
  while #lanes > 0 and not lanes[#lanes] do
    lanes[#lanes] = nil
  end
end

-- Returns the row that joins other lanes with the same id into the lane; nil without such lanes.
local function joining_row(lanes, lane, id)
  local characters, last = {}, nil
  for other = lane + 1, #lanes do
    if lanes[other] == id then
      characters[other] = "┴"
      last = other
    end
  end
  if not last then
    return nil
  end
  characters[lane], characters[last] = "├", "╯"
  local text = row(lanes, characters, lane, last)
  for other in pairs(characters) do
    lanes[other] = other == lane and id or false
  end
  trim(lanes)
  return text
end

-- Returns the row that leads to the other parents of a merge.
local function branching_row(lanes, lane, parents)
  local before, characters, first, last = vim.deepcopy(lanes), {}, lane, lane
  for index = 2, #parents do
    local target, is_new = take_lane(lanes, parents[index], lane)
    if target ~= lane then
      characters[target] = is_new and "new" or "old"
      first, last = math.min(first, target), math.max(last, target)
    end
  end
  if first == last then
    return nil
  end
  for target, kind in pairs(characters) do
    if target == last then
      characters[target] = kind == "new" and "╮" or "┤"
    elseif target == first then
      characters[target] = "├"
    else
      characters[target] = kind == "new" and "┬" or "┼"
    end
  end
  characters[lane] = first == lane and "├" or last == lane and "┤" or "┼"
  return row(before, characters, first, last)
end

-- Adds the next commit. Returns the rows of the graph before its line, the graph in its line, and
-- the rows after it. A parent that was added before its child, as git lists them if clocks differ,
-- is not connected.
function Graph:add(id, parents)
  local lanes, before, after = self.lanes, {}, {}
  self.shown[id] = true
  parents = vim.tbl_filter(function(parent)
    return not self.shown[parent]
  end, parents)
  local lane = take_lane(lanes, id, 0)
  before[1] = joining_row(lanes, lane, id)
  local text = row(lanes, { [lane] = "*" })
  lanes[lane] = parents[1] or false
  after[1] = #parents > 1 and branching_row(lanes, lane, parents) or nil
  trim(lanes)
  return before, text, after
end

return M
