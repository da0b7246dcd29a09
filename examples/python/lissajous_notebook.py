# %% [markdown]
# # A Lissajous figure, from the formula to the mirror
# Run cell by cell in Jupyter, VS Code or Spyder, or all at once with `python3 lissajous_notebook.py`.
# The package: `pip install ./bindings/python`. Without hardware, start `zrv simulate --port-dir /tmp/zrv-ports` in a
# terminal and set `ZRV_PORT_DIR=/tmp/zrv-ports`.

# %%
import os

import numpy as np
import zrv

zrv.set_port_directory(os.environ.get("ZRV_PORT_DIR"))
print("ZRV", zrv.__version__)

# %% [markdown]
# ## Samples
# A scan is three arrays: x and y from -1 to 1, and m, the digital byte that switches laser and outputs. `help()` of a
# pattern lists its settings.

# %%
generator = zrv.DataGenerator()
figure = generator.lissajous(freq_x=3, freq_y=4, sample_rate=20000, refresh_rate=20)
print(figure, "from", figure.xy.min(axis=0), "to", figure.xy.max(axis=0))

# %% [markdown]
# Samples are NumPy's to work with. Here the laser lights every second tenth of the figure.

# %%
tenth = np.arange(len(figure)) * 10 // len(figure)
dashed = zrv.Scan(figure.x, figure.y, np.where(tenth % 2 == 0, 255, 0), figure.sample_rate)

# %% [markdown]
# How fast does the mirror have to go? The speed in units a second, and what a low pass leaves of it.

# %%
generator.set_filter(zrv.FilterType.BESSEL, order=5, cutoff=1000, sample_rate=figure.sample_rate)
for name, scan in {"as made": dashed, "filtered": generator.filter(dashed, zero_phase=True)}.items():
    speed = np.linalg.norm(np.diff(scan.xy, axis=0), axis=1) * scan.sample_rate
    print(f"{name}: {speed.max():.0f} units/s at most")

# %%
try:
    import matplotlib.pyplot as plt
    plt.scatter(dashed.x, dashed.y, c=dashed.m, s=2)
    plt.gca().set_aspect("equal")
    plt.show()
except ImportError:
    print("no picture: matplotlib is not installed")

# %% [markdown]
# ## Play it
# Leaving the block stops the mirror and switches the laser off.

# %%
print(*zrv.devices(), sep="\n")
with zrv.Device() as device:
    device.configure(data_scale=0.8, device_axes=zrv.Axes.FLIP_X)
    device.play(dashed, repeat=10, wait=True)
    print("stopped at", device.stop())

# %% [markdown]
# ## What goes on at the analog inputs meanwhile

# %%
with zrv.Device() as device:
    device.play(dashed)
    first, second = device.capture(2000)
print(f"input 0: {first.mean():.3f} V, {np.ptp(first):.3f} V peak to peak; input 1: {np.ptp(second):.3f} V")
