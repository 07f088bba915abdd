# Sourced by scripts/test and scripts/measure (bash): a temporary HOME with
# its own XDG folders, and a private PulseAudio server with a null sink whose
# monitor is the default input, so that ALSA's default device plays into it
# and records what was played. The caller traps EXIT to private_cleanup.
# Processes are stopped by the PIDs this file started, nothing else.

# Makes the temporary folders and points HOME, the XDG variables and Qt at
# them; $scratch holds them all.
private_folders() {
    scratch=$(mktemp -d "${TMPDIR:-/tmp}/wavelark-tests-XXXXXX")
    export HOME="$scratch/home" XDG_CONFIG_HOME="$scratch/home/config" \
           XDG_STATE_HOME="$scratch/home/state" XDG_DATA_HOME="$scratch/home/data" \
           XDG_CACHE_HOME="$scratch/home/cache" XDG_RUNTIME_DIR="$scratch/runtime"
    mkdir -p "$HOME" "$XDG_CONFIG_HOME" "$XDG_STATE_HOME" "$XDG_DATA_HOME" "$XDG_CACHE_HOME"
    mkdir -m 700 -p "$XDG_RUNTIME_DIR"
    export QT_QPA_PLATFORM=offscreen
    unset DISPLAY WAYLAND_DISPLAY
}

pulse_pid=""
keepawake_pid=""
stop_pid() {  # pid: stops one process this script started
    if [ -n "$1" ] && kill -0 "$1" 2>/dev/null; then
        kill "$1" 2>/dev/null || true
        wait "$1" 2>/dev/null || true
    fi
}
stop_pulse() {
    stop_pid "$keepawake_pid"
    stop_pid "$pulse_pid"
    keepawake_pid=""
    pulse_pid=""
}
private_cleanup() {
    stop_pulse
    [ -n "${scratch:-}" ] && rm -rf "$scratch"
}

start_pulse() {
    # ALSA's default device goes through the PulseAudio plugin to this server.
    # The tests run with HOME elsewhere, so the setting also goes into a top
    # ALSA configuration of our own that includes the system's.
    printf 'pcm.!default pulse\nctl.!default pulse\n' > "$HOME/.asoundrc"
    printf '</usr/share/alsa/alsa.conf>\npcm.!default pulse\nctl.!default pulse\n' \
        > "$scratch/asound.conf"
    pulseaudio --daemonize=no --exit-idle-time=-1 --disallow-exit -n \
        --load="module-native-protocol-unix" \
        --load="module-null-sink sink_name=wavelark_null sink_properties=device.description=WavelarkNull" \
        --log-target=file:"$scratch/pulseaudio.log" &
    pulse_pid=$!
    for _ in $(seq 1 100); do
        if pactl info >/dev/null 2>&1; then
            pactl set-default-sink wavelark_null
            pactl set-default-source wavelark_null.monitor
            # With no client asking for a short latency the null sink renders
            # up to two seconds ahead, and a new stream waits that long for
            # its first samples. A silent low-latency stream keeps it ticking
            # every few milliseconds, as a sound card does.
            pacat --playback --raw --latency-msec=20 --client-name=wavelark-keepawake /dev/zero &
            keepawake_pid=$!
            # A fresh server holds its first streams back for about two
            # seconds; reading a moment of the monitor waits that out here
            # rather than in the first test.
            timeout 10 parec --raw --latency-msec=20 --device=wavelark_null.monitor 2>/dev/null \
                | head -c 4410 >/dev/null || true
            export WAVELARK_PULSE_PID=$pulse_pid
            export PULSE_SERVER="unix:$XDG_RUNTIME_DIR/pulse/native"
            export ALSA_CONFIG_PATH="$scratch/asound.conf"
            return 0
        fi
        kill -0 "$pulse_pid" 2>/dev/null || break
        sleep 0.1
    done
    echo "the private PulseAudio server did not start:" >&2
    cat "$scratch/pulseaudio.log" >&2 || true
    return 1
}
