-- Builds an Ardour session that runs plug-ins on recorded audio, for a later
-- export with ardour7-export. Run by ardour7-lua (see run.py beside it):
--
--   ardour7-lua session.lua PLAN SESSION_DIR SESSION_NAME SECONDS
--
-- PLAN has one track per line, fields separated by tabs:
--   track name, plug-in type (LXVST, LV2, LADSPA or none), plug-in name or URI,
--   channel count, parameter settings "index=value,index=value" (may be empty).
--
-- Every track records SECONDS of the Dummy backend's noise from its own
-- capture ports, then gets its plug-in with the given parameter values. The
-- recordings are moved LEAD_IN_FRAMES into the session, which starts at 0:
-- Ardour fades the first few thousand frames of an export in, and this way
-- the fade meets only silence that every plug-in also hears. Each
-- track's outputs go to a range of master inputs of their own, so the master
-- (and the export) carries every track side by side, unmixed. Panners are
-- bypassed, region fades are off, and every gain stage on the way is checked
-- to be exactly unity. The script prints one line per track:
--   TRACK <name> <first master channel> <channels> <offset into the sources> <region length> <source file>...
-- and stops with an error whenever something is not as planned.

local plan_path, session_dir, session_name, seconds, lead_in =
  arg[1], arg[2], arg[3], tonumber(arg[4]), tonumber(arg[5])
assert(plan_path and session_dir and session_name and seconds and lead_in,
       "usage: session.lua PLAN DIR NAME SECONDS LEAD_IN_FRAMES")

local function split(text, separator)
  local fields = {}
  for field in (text .. separator):gmatch("(.-)" .. separator) do fields[#fields + 1] = field end
  return fields
end

local plan = {}
for line in io.lines(plan_path) do
  if line ~= "" then
    local f = split(line, "\t")
    local settings = {}
    if f[5] and f[5] ~= "" then
      for _, pair in ipairs(split(f[5], ",")) do
        local index, value = pair:match("^(%d+)=(.+)$")
        assert(index, "bad parameter setting '" .. pair .. "' in " .. line)
        settings[#settings + 1] = { tonumber(index), tonumber(value) }
      end
    end
    plan[#plan + 1] = { name = f[1], kind = f[2], plugin = f[3], channels = tonumber(f[4]), settings = settings }
  end
end

local backend = AudioEngine:set_backend("None (Dummy)", "", "")
assert(backend, "the Dummy backend is not available (hide-dummy-backend must be 0)")
backend:set_device_name("Pink Noise")
assert(create_session(session_dir, session_name, 48000), "cannot create the session")

local audio = ARDOUR.DataType("audio")
local _, found = AudioEngine:get_backend_ports("", audio, ARDOUR.PortFlags.IsOutput | ARDOUR.PortFlags.IsPhysical,
                                               C.StringVector())
local capture = {}
for name in found[4]:iter() do capture[#capture + 1] = name end
assert(#capture > 0, "the backend offers no capture ports")

local function unity(control, what)
  local value = control:get_value()
  assert(value == 1, what .. " gain is " .. tostring(value) .. ", not 1")
end

-- The master carries every track side by side.
local master = Session:master_out()
local total = 0
for _, entry in ipairs(plan) do total = total + entry.channels end
while master:n_inputs():n_audio() < total do master:input():add_port("", nil, audio) end
while master:n_outputs():n_audio() < total do master:output():add_port("", nil, audio) end
assert(master:n_inputs():n_audio() == total and master:n_outputs():n_audio() == total,
       "the master has " .. master:n_inputs():n_audio() .. " inputs, not " .. total)
master:panner_shell():set_bypassed(true)
unity(master:gain_control(), "master fader")
unity(master:trim_control(), "master trim")

local next_capture, next_master = 0, 0
for _, entry in ipairs(plan) do
  local track = Session:new_audio_track(entry.channels, entry.channels, nil, 1, entry.name, -1,
                                        ARDOUR.TrackMode.Normal, false):front()
  assert(track and not track:isnil(), "cannot make track " .. entry.name)
  assert(track:name() == entry.name, "track " .. entry.name .. " was named " .. track:name())
  track:input():disconnect_all(nil)
  track:output():disconnect_all(nil)
  for k = 0, entry.channels - 1 do
    track:input():audio(k):connect(capture[next_capture % #capture + 1])
    next_capture = next_capture + 1
    track:output():audio(k):connect(master:input():audio(next_master + k):name())
  end
  entry.first = next_master
  next_master = next_master + entry.channels
  track:panner_shell():set_bypassed(true)
  unity(track:gain_control(), entry.name .. " fader")
  unity(track:trim_control(), entry.name .. " trim")
  track:rec_enable_control():set_value(1, PBD.GroupControlDisposition.NoGroup)
  entry.track = track
end

Session:maybe_enable_record(false)
Session:request_roll(ARDOUR.TransportRequestSource.TRS_UI)
sleep(seconds)
Session:request_stop(false, false, ARDOUR.TransportRequestSource.TRS_UI)
sleep(1)

for _, entry in ipairs(plan) do
  local track = entry.track
  track:rec_enable_control():set_value(0, PBD.GroupControlDisposition.NoGroup)
  -- From now on the track plays its recording and hears nothing live.
  track:input():disconnect_all(nil)
  track:monitoring_control():set_value(ARDOUR.MonitorChoice.MonitorDisk, PBD.GroupControlDisposition.NoGroup)
  local recorded = {}
  for r in track:playlist():region_list():iter() do recorded[#recorded + 1] = r end
  assert(#recorded == 1, entry.name .. " recorded " .. #recorded .. " regions, not 1")
  local region = recorded[1]:to_audioregion()
  -- The region plays as recorded: no fades, no envelope, unity gain.
  region:set_fade_in_active(false)
  region:set_fade_out_active(false)
  region:set_envelope_active(false)
  assert(region:scale_amplitude() == 1, entry.name .. " region gain is not 1")
  local files = {}
  for k = 0, region:n_channels() - 1 do files[#files + 1] = region:source(k):to_filesource():path() end
  assert(#files == entry.channels, entry.name .. " recorded " .. #files .. " channels")
  region:set_position(Temporal.timepos_t(lead_in))
  -- The region plays its sources from an offset (the capture alignment) on.
  entry.report = string.format("TRACK %s %d %d %d %d %s", entry.name, entry.first, entry.channels,
                               region:start():samples(), region:length():samples(), table.concat(files, " "))

  if entry.kind ~= "none" then
    local plugin = ARDOUR.LuaAPI.new_plugin(Session, entry.plugin, ARDOUR.PluginType[entry.kind], "")
    assert(not plugin:isnil(), "Ardour finds no " .. entry.kind .. " plug-in '" .. entry.plugin .. "'")
    assert(track:add_processor_by_index(plugin, 0, nil, true), "cannot add " .. entry.plugin)
    for _, setting in ipairs(entry.settings) do
      local index, value = setting[1], setting[2]
      assert(ARDOUR.LuaAPI.set_processor_param(plugin, index, value),
             entry.plugin .. " refuses parameter " .. index)
      local now = ARDOUR.LuaAPI.get_processor_param(plugin, index)
      assert(now == value, entry.plugin .. " parameter " .. index .. " reads " .. tostring(now) ..
             " after setting " .. tostring(value))
    end
  end
  unity(track:gain_control(), entry.name .. " fader")
end

-- Adding a plug-in may have the track's outputs connected anew: wire every
-- track once more, then check that each master input hears one track port.
for _, entry in ipairs(plan) do
  entry.track:output():disconnect_all(nil)
  for k = 0, entry.channels - 1 do
    entry.track:output():audio(k):connect(master:input():audio(entry.first + k):name())
  end
end
local backend_names = {}  -- Ardour's port names as the backend knows them ("client:port")
local _, listed = AudioEngine:get_backend_ports("", audio, ARDOUR.PortFlags.IsInput, C.StringVector())
for name in listed[4]:iter() do backend_names[name:match("^[^:]*:(.*)$") or name] = name end
for k = 0, total - 1 do
  local port = master:input():audio(k)
  local _, connections = AudioEngine:get_connections(backend_names[port:name()] or port:name(), C.StringVector())
  assert(connections[2]:size() == 1,
         port:name() .. " hears " .. connections[2]:size() .. " ports, not 1")
end

local range = Session:locations():session_range_location()
local length = 0
for _, entry in ipairs(plan) do
  for r in entry.track:playlist():region_list():iter() do
    assert(r:position():samples() == lead_in, entry.name .. " region is not at " .. lead_in)
    length = math.max(length, r:length():samples())
  end
end
range:set(Temporal.timepos_t(0), Temporal.timepos_t(lead_in + length))
assert(range:start():samples() == 0 and range:_end():samples() == lead_in + length, "cannot set the session range")

for _, entry in ipairs(plan) do print(entry.report) end
Session:save_state("", false, false, false, false, false)
close_session()
print("SESSION SAVED")
