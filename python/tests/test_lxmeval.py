"""The Python module on simulated boards: what bench scripts rely on."""
import threading

import numpy as np
import pytest

import lxmeval


def open_sim(**kw):
    kw.setdefault("latency_us", 0)
    return lxmeval.open(simulate=True, sensor="LXM410", **kw)


def test_collect_gives_the_logs_numbers_and_follows_the_light():
    with open_sim() as b:
        b.sim.light = 300
        b.configure(range=1000, resolution=12, measure="als-cont")
        a = b.collect(n=50, interval_ms=8)
        assert a.dtype.names == ("time", "count", "value", "flags")
        assert len(a) == 50
        good = a[a["flags"] == 0]
        assert len(good) >= 48
        # lux = range * count / (full scale + 1), the forms' conversion
        assert np.allclose(good["value"], 1000 * good["count"] / 4096)
        assert abs(np.median(good["value"]) - 300) < 30
        assert np.all(np.diff(a["time"]) > 0)
        b.sim.light = 5000
        sat = b.collect(n=5, interval_ms=8)
        assert np.all(sat["flags"][1:] & lxmeval.SATURATED)


def test_the_log_holds_the_same_numbers(tmp_path):
    path = tmp_path / "run.csv"
    with open_sim() as b:
        b.configure(measure="ir-cont")
        a = b.collect(n=20, interval_ms=0, log=str(path))
    lines = path.read_bytes().decode().split("\r\n")
    assert "# sensor: LXM410" in lines and "# measurement: IR Cont" in lines
    head = [l for l in lines if l and not l.startswith("#")]
    columns = head[0].split(",")
    rows = [dict(zip(columns, l.split(","))) for l in head[1:]]
    assert [int(r["raw"]) for r in rows] == list(a["count"])
    status = {0: "ok", lxmeval.EARLY: "early", lxmeval.SATURATED: "saturated"}
    assert [r["status"] for r in rows] == [status[f] for f in a["flags"]]
    with pytest.raises(ValueError, match="no/such"):
        with open_sim() as b:
            b.collect(n=1, log=str(tmp_path / "no/such/run.csv"))


def test_registers_and_readings():
    with open_sim() as b:
        b.write(1, 0x04)
        assert b.read(1) == 0x04
        b.write_block(4, [1, 2, 3, 4])
        assert b.read_block(4, 4) == [1, 2, 3, 4]
        b.configure(measure="ir")
        r = b.reading()
        assert r["status"] == "ok" and r["unit"] == "counts" and r["value"] == r["count"]


@pytest.mark.parametrize("call, error", [
    (lambda b: b.read(256), lxmeval.OutOfRange),
    (lambda b: b.read_block(0, 9), IndexError),
    (lambda b: b.write(0, 256), ValueError),
    (lambda b: b.configure(range=123), lxmeval.BadValue),
    (lambda b: b.configure(measure="lux"), lxmeval.Error),
    (lambda b: setattr(b.sim, "source", "candle"), ValueError),
])
def test_bad_requests_raise_with_a_message(call, error):
    with open_sim() as b:
        with pytest.raises(error, match=r"\w+"):
            call(b)


def test_a_board_that_goes_away_raises_and_comes_back():
    with open_sim() as b:
        b.configure(range=4000)
        b.sim.unplug()
        with pytest.raises(lxmeval.BoardGone, match="disconnected"):
            b.read(0)
        with pytest.raises(ConnectionError):
            b.collect(n=3, interval_ms=0)
        b.sim.plug()
        assert b.read(1) & 0x03 == 1, "the range is written back"


def test_boards_collect_side_by_side_in_threads():
    boards = [open_sim(latency_us=200) for _ in range(3)]
    results = [None] * len(boards)
    for i, b in enumerate(boards):
        b.sim.light = 100 * 3 ** i  # apart enough that a crossed reply could not pass
        b.configure(range=4000, resolution=12, measure="als-cont")

    def run(i):
        results[i] = boards[i].collect(n=300, interval_ms=0)

    threads = [threading.Thread(target=run, args=(i,)) for i in range(len(boards))]
    for t in threads:
        t.start()
    for t in threads:
        t.join()
    for i, a in enumerate(results):
        assert len(a) == 300
        good = a[(a["flags"] == 0) & (a["time"] > 0.02)]  # after the first conversion
        assert np.all(np.abs(good["value"] - 100 * 3 ** i) < 40 * 3 ** i), i
    for b in boards:
        b.close()


def test_run_script(tmp_path):
    script = tmp_path / "check.txt"
    script.write_text("04,A5 # write\n04,,A5 # read back\n05,,5A # never written\n")
    with open_sim() as b:
        out = b.run_script(str(script), loops=2)
        assert (out["passed"], out["failed"], out["rows"]) == (2, 2, 6)


def test_no_real_board_is_an_error_not_a_crash():
    if any(x.openable for x in lxmeval.boards()):
        pytest.skip("a real board is attached")
    with pytest.raises(lxmeval.NoBoard):
        lxmeval.open(board="250:250")


def test_the_dual_mode_and_the_multi_function_chip():
    with open_sim() as b:
        b.configure(measure="prox-ir")
        r = b.reading()
        assert r["status"] == "ok" and r["count"] == r["prox"] - r["ir"]
    with lxmeval.open(simulate=True, sensor="LXM600", latency_us=0) as b:
        b.sim.light = 300
        b.configure(measure="als-cont")
        good = b.collect(n=5, interval_ms=30)
        good = good[good["flags"] == 0]
        # lux at 2000 lux full scale of 4096 counts, as the device form shows them
        assert len(good) >= 3 and np.allclose(good["value"], 2000 * good["count"] / 4096)
        with pytest.raises(lxmeval.BadValue, match="family"):
            b.configure(measure="prox-ir")
