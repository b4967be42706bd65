-- SPDX-License-Identifier: ISC
-- Run by lv2.sh through Ardour's session runner: create DIR (a session with the plug-in, two values set), values DIR (loads
-- it and prints them). Saves what it printed.
local mode, dir = arg[1], arg[2]
local uri = "https://meridane.example/lv2/qlx-brezan"

AudioEngine:set_backend ("None (Dummy)", "", "")
local session, proc
if mode == "create" then
	session = create_session (dir, "session", 48000)
	local track = session:new_audio_track (2, 2, nil, 1, "Track", ARDOUR.PresentationInfo.max_order, ARDOUR.TrackMode.Normal, true):front ()
	proc = ARDOUR.LuaAPI.new_plugin (session, uri, ARDOUR.PluginType.LV2, "")
	assert (not proc:isnil (), "no instance")
	assert (track:add_processor_by_index (proc, 0, nil, true) == 0, "the track refused the plug-in")
	ARDOUR.LuaAPI.set_processor_param (proc, 17, 1.25) -- slow speed of the horn, Hz
	ARDOUR.LuaAPI.set_processor_param (proc, 2, 100) -- lever, %
	local port = proc:to_plugininsert ():plugin (0):nth_parameter (5, 0) -- motor noise: its moves are recorded
	local noise = proc:to_automatable ():automation_control (Evoral.Parameter (ARDOUR.AutomationType.PluginAutomation, 0, port), true)
	noise:set_automation_state (ARDOUR.AutoState.Touch)
else
	session = load_session (dir, "session")
	for route in session:get_routes ():iter () do
		local p = route:nth_plugin (0)
		if not p:isnil () then proc = p end
	end
	assert (proc, "the session holds no plug-in")
end
sleep (1)
for i = 0, 31 do
	print (string.format ("value %d %.9g", i, (ARDOUR.LuaAPI.get_processor_param (proc, i))))
end
session:save_state ("", false, false, false, false, false)
