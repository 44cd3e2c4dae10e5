"""Sounds as files and what the command line editor says of them, for the scripts that measure it."""
import json
import struct
import subprocess
import wave


def write(path, samples, rate):
    """Samples of one channel, full scale ±1, as a 16-bit WAV file."""
    with wave.open(str(path), "wb") as file:
        file.setnchannels(1)
        file.setsampwidth(2)
        file.setframerate(rate)
        file.writeframes(struct.pack(f"<{len(samples)}h", *(max(-32768, min(32767, round(s * 32768))) for s in samples)))


def told(*command):
    """What a command of the editor prints as JSON."""
    return json.loads(subprocess.run([*command, "--json"], check=True, capture_output=True).stdout)
