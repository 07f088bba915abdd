#!/usr/bin/env python3
"""Sweeps Wavelark's sine from 100 Hz to 10 kHz in 1/3-octave steps over its
remote control and prints the THD+N that the sound card's input measures at
each step.

Turn on File > Remote control in Wavelark first, and connect the card's
output to its input (a loop-back cable, or the device under test between
them). Standard library only:

    examples/thdn_sweep.py [--host 127.0.0.1] [--port 5025]
"""
import argparse
import socket
import sys


class Instrument:
    """One connection to the remote control: a line out, a line back."""

    def __init__(self, host, port, timeout):
        self.sock = socket.create_connection((host, port), timeout=timeout)
        self.reader = self.sock.makefile("r", encoding="ascii", newline="\n")

    def write(self, line):
        self.sock.sendall((line + "\n").encode("ascii"))

    def ask(self, line):
        self.write(line)
        reply = self.reader.readline()
        if not reply:
            raise ConnectionError("Wavelark closed the connection")
        return reply.strip()

    def errors(self):
        """Every queued error, oldest first."""
        found = []
        while True:
            error = self.ask("SYST:ERR?")
            if error.startswith("0,"):
                return found
            found.append(error)

    def close(self):
        self.reader.close()
        self.sock.close()


def third_octaves(low, high):
    """The 1/3-octave steps from low to high: ten to the decade."""
    steps = []
    k = 0
    while True:
        frequency = low * 10 ** (k / 10)
        if frequency > high * 1.001:
            return steps
        steps.append(round(frequency, 1))
        k += 1


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--host", default="127.0.0.1")
    parser.add_argument("--port", type=int, default=5025)
    parser.add_argument("--timeout", type=float, default=30, help="seconds to wait for a reply")
    args = parser.parse_args()

    try:
        wavelark = Instrument(args.host, args.port, args.timeout)
    except OSError as error:
        sys.exit(f"Cannot reach Wavelark at {args.host}:{args.port} ({error}); "
                 "is File > Remote control on?")

    print(wavelark.ask("*IDN?"))
    wavelark.ask("*CLS;FUNC SIN;:SWE OFF;:OUTP ON;*OPC?")
    print(f"{'Set (Hz)':>10} {'Measured (Hz)':>14} {'THD+N (dB)':>11} {'THD+N (%)':>10}")
    for frequency in third_octaves(100, 10000):
        # MEAS:THDN? records a second of the input while the tone plays; the
        # FREQ? that follows on the line is MEAS:FREQ? of that recording.
        reply = wavelark.ask(f"FREQ {frequency};:MEAS:THDN?;FREQ?")
        thdn, measured = (float(value) for value in reply.split(";"))
        if thdn > 1e37:
            print(f"{frequency:>10.1f} {'-':>14} {'no tone':>11} {'-':>10}")
            continue
        percent = 100 * 10 ** (thdn / 20)
        print(f"{frequency:>10.1f} {measured:>14.2f} {thdn:>11.1f} {percent:>10.4f}")
    wavelark.ask("OUTP OFF;*OPC?")
    for error in wavelark.errors():
        print("Wavelark reported:", error, file=sys.stderr)
    wavelark.close()


if __name__ == "__main__":
    main()
