#!/usr/bin/python3
"""A bench sweep: step the light, read the sensor, compare, report.

Runs on the simulated board as it stands (python3 bench_sweep.py); on the bench, open the real
board instead (lxmeval.open(board="1:7"), see lxmeval.boards()) and step your own light source.
"""
import sys

import numpy as np

import lxmeval

STEPS_LUX = [50, 200, 800]
TOLERANCE = 0.10  # of the set light


def sweep(board, set_light):
    board.configure(range=1000, resolution=16, measure="als-cont")
    failures = 0
    for lux in STEPS_LUX:
        set_light(lux)
        samples = board.collect(n=5)  # paced at the interval the resolution suggests
        good = samples[samples["flags"] == 0]
        measured = float(np.median(good["value"])) if len(good) else float("nan")
        ok = abs(measured - lux) <= TOLERANCE * lux
        failures += not ok
        print(f"{lux:6d} lux set  {measured:9.1f} lux read  {len(good)}/{len(samples)} good  "
              f"{'pass' if ok else 'FAIL'}")
    return failures


def test_sweep_on_the_simulated_board():
    with lxmeval.open(simulate=True, sensor="LXM410", latency_us=0) as b:
        assert sweep(b, lambda lux: setattr(b.sim, "light", lux)) == 0


if __name__ == "__main__":
    with lxmeval.open(simulate=True, sensor="LXM410") as b:
        sys.exit(1 if sweep(b, lambda lux: setattr(b.sim, "light", lux)) else 0)
