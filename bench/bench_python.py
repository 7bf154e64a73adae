#!/usr/bin/python3
"""bench_python.py [BUILD_DIR]: 20,000 reads of 16 bytes from Python (mavix.Device.read) against
the same reads through the C++ agent (bench_agent_reads), both from one mavix-sim started for the
run, in ten alternating rounds of 2,000 each, so that a busy machine weighs on both alike. Prints
both rates (all reads over all their time) and "ratio: python/agent" last.

BUILD_DIR is the build folder (default: the one this copy sits in, or build/test beside the
sources); Debian's /usr/bin/python3 runs it.
"""

import os
import statistics
import subprocess
import sys
import time

READS = 20000
LENGTH = 16
ROUNDS = 10


def build_dir():
    if len(sys.argv) > 1:
        return os.path.abspath(sys.argv[1])
    here = os.path.dirname(os.path.abspath(__file__))
    if os.path.isdir(os.path.join(here, "..", "python", "mavix")):
        return os.path.normpath(os.path.join(here, ".."))
    return os.path.normpath(os.path.join(here, "..", "build", "test"))


def main():
    build = build_dir()
    sys.path.insert(0, os.path.join(build, "python"))
    import mavix
    from mavix.pytest_plugin import start_simulator, stop_simulator

    process, target = start_simulator([])
    try:
        dev = mavix.Device(target, timeout_ms=2000)
        udp_port = target.split(":")[1]
        for _ in range(1000):  # warm-up
            dev.read(0, LENGTH)
        per_round = READS // ROUNDS
        python_rates, agent_rates = [], []
        for _ in range(ROUNDS):
            start = time.perf_counter()
            for _ in range(per_round):
                dev.read(0, LENGTH)
            python_rates.append(per_round / (time.perf_counter() - start))
            line = subprocess.run(
                [os.path.join(build, "bench", "bench_agent_reads"), udp_port, str(per_round),
                 str(LENGTH)], check=True, capture_output=True, text=True, timeout=120).stdout
            agent_rates.append(float(line.split()[1]))
    finally:
        stop_simulator(process)
    # All reads over all their time: the harmonic mean of equal rounds.
    python_rate = statistics.harmonic_mean(python_rates)
    agent_rate = statistics.harmonic_mean(agent_rates)
    print(f"load average: {open('/proc/loadavg').read().split()[0]}")
    print(f"python: {python_rate:.0f} reads/s of {LENGTH} bytes "
          f"(rounds {min(python_rates):.0f} to {max(python_rates):.0f})")
    print(f"agent:  {agent_rate:.0f} reads/s of {LENGTH} bytes "
          f"(rounds {min(agent_rates):.0f} to {max(agent_rates):.0f})")
    print(f"ratio: {python_rate / agent_rate:.2f}")


if __name__ == "__main__":
    main()
