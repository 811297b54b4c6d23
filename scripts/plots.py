"""The pictures of docs/performance.md, by matplotlib."""
import matplotlib

matplotlib.use("svg")
from matplotlib.figure import Figure
from matplotlib.lines import Line2D
from matplotlib.ticker import FixedLocator, FuncFormatter, NullLocator

TYPES = {"s": "single precision", "d": "double precision", "c": "single complex", "z": "double complex"}
MARKERS = {"s": "o", "d": "^", "c": "s", "z": "D"}
HOST, DEVICE, PEER, GRID = "#0b62a4", "#c8561b", "#6b6b6b", "#e2e2e2"
PANEL_WIDTH, PANEL_HEIGHT = 3.8, 2.4  # inches
RATIO_TICKS = [factor * 10.0 ** decade for decade in range(-4, 5) for factor in (1, 2, 5)]

matplotlib.rcParams.update({
    "svg.fonttype": "none", "svg.hashsalt": "tarn",  # text as text, and the same file from the same results
    "font.family": ["DejaVu Sans", "sans-serif"], "font.size": 9,
    "axes.spines.top": False, "axes.spines.right": False, "axes.axisbelow": True,
})


def peer_gflops(row):
    return row["gflops"] * row["ratio"]


def plain(value, _):
    return f"{value:g}"


def label_sizes(axes, sizes):
    axes.set_xscale("log", base=2)
    axes.xaxis.set_major_locator(FixedLocator(sizes))
    axes.xaxis.set_minor_locator(NullLocator())
    axes.xaxis.set_major_formatter(FuncFormatter(plain))


def draw_rates(axes, letter, sizes):
    """One element type: GFLOP/s over n of the two ways to call, and of the peer."""
    lines = {"peer": [peer_gflops(of["host"]) for of in sizes.values()],
             "device": [of["device"]["gflops"] for of in sizes.values()],
             "host": [of["host"]["gflops"] for of in sizes.values()]}
    for (name, values), (colour, style) in zip(lines.items(), ((PEER, "--"), (DEVICE, "-"), (HOST, "-"))):
        axes.plot(list(sizes), values, style, color=colour, marker="o", markersize=4, gid=f"{letter}-{name}")
    axes.set_title(TYPES[letter], fontsize=9)
    label_sizes(axes, list(sizes))
    axes.set_ylim(0, 1.1 * max(max(values) for values in lines.values()))
    axes.grid(axis="y", color=GRID)
    axes.set_xlabel("n")


def rates(routine, by_type, peer, machine):
    """A routine's figure: a panel for each element type."""
    figure = Figure(figsize=(PANEL_WIDTH * len(by_type), PANEL_HEIGHT), layout="constrained")
    panels = figure.subplots(1, len(by_type), squeeze=False)
    for axes, (letter, sizes) in zip(panels[0], by_type.items()):
        draw_rates(axes, letter, sizes)
    panels[0][0].set_ylabel("GFLOP/s")
    handles = [Line2D([], [], color=colour, linestyle=style, marker="o", markersize=4, label=label)
               for label, colour, style in (("host pointers", HOST, "-"), ("device pointers", DEVICE, "-"),
                                            (peer, PEER, "--"))]
    head(figure, f"{routine}: {machine}", handles, columns=3)
    return figure


def head(figure, title, handles, columns):
    """Title and legend above the panels, where saving makes room for them."""
    legend = figure.legend(handles=handles, ncols=columns, loc="lower left", bbox_to_anchor=(0, 1.01), frameon=False,
                           borderaxespad=0, columnspacing=1.4)
    figure.canvas.draw()
    top = legend.get_window_extent().transformed(figure.transFigure.inverted()).y1
    figure.text(0.008, top + 0.06 / figure.get_figheight(), title, fontsize=11, fontweight="bold", va="bottom")


def draw_ratios(axes, rows, routines, pointers, colours):
    """One way to call: a line of marks for each routine, its types one below the other."""
    types = {routine: [letter for letter in TYPES if any((row["routine"], row["type"]) == (routine, letter)
                                                         for row in rows)] for routine in routines}
    for letter, marker in MARKERS.items():
        for size, colour in colours.items():
            points = [(row["ratio"], routines.index(row["routine"]) + 0.22 * (of.index(letter) - (len(of) - 1) / 2))
                      for row in rows for of in [types[row["routine"]]]
                      if (row["type"], row["size"], row["pointers"]) == (letter, size, pointers)]
            if points:
                axes.plot(*zip(*points), marker, markersize=5, color=colour, markeredgecolor="#333",
                          markeredgewidth=0.4, gid=f"{letter}-{size}-{pointers}")
    axes.axvline(1, color="#333", linewidth=1)
    axes.set_xscale("log")
    axes.xaxis.set_major_locator(FixedLocator(RATIO_TICKS))
    axes.xaxis.set_minor_locator(NullLocator())
    axes.xaxis.set_major_formatter(FuncFormatter(plain))
    axes.grid(axis="x", color=GRID)
    for border in range(1, len(routines)):
        axes.axhline(border - 0.5, color=GRID, linewidth=0.6)
    axes.set_title(f"{pointers} pointers", fontsize=9)


def ratios(rows, machine):
    """All routines in one figure: each row's ratio, by the type as marker and the size as colour."""
    routines = list(dict.fromkeys(row["routine"] for row in rows))
    sizes = sorted({row["size"] for row in rows})
    shades = matplotlib.colormaps["YlGnBu"]
    colours = {size: shades(0.15 + 0.85 * i / max(1, len(sizes) - 1)) for i, size in enumerate(sizes)}
    figure = Figure(figsize=(9, 1 + 0.27 * len(routines)), layout="constrained")
    panels = figure.subplots(1, 2, sharex=True, sharey=True)
    for axes, pointers in zip(panels, ("host", "device")):
        draw_ratios(axes, rows, routines, pointers, colours)
    panels[0].set_yticks(range(len(routines)), routines)
    panels[0].set_ylim(len(routines) - 0.5, -0.5)
    peers = " or ".join(dict.fromkeys(row["reference"] for row in rows))
    figure.supxlabel(f"faster     \N{LEFTWARDS ARROW}     time over that of {peers}     \N{RIGHTWARDS ARROW}     slower",
                     fontsize=9)
    handles = [Line2D([], [], linestyle="", marker=MARKERS[letter], color="white", markeredgecolor="#333", label=name)
               for letter, name in TYPES.items() if any(row["type"] == letter for row in rows)]
    handles += [Line2D([], [], linestyle="", marker="o", color=colour, markeredgecolor="#333", markeredgewidth=0.4,
                       label=f"n = {size}") for size, colour in colours.items()]
    head(figure, f"Ratios of all routines: {machine}", handles, columns=len(handles))
    return figure


def save(figure, path):
    figure.savefig(path, format="svg", bbox_inches="tight", pad_inches=0.08, metadata={"Date": None, "Creator": None})
