"""Bar charts of ratios as SVG, one bar a row, on a logarithmic scale; plain enough to be read in a diff."""
import html
import math

WIDTH, LABELS, BAR, GAP, TOP, RIGHT = 860, 360, 11, 5, 56, 70
LEAST, MOST = 0.02, 10.0
FASTER, SLOWER, GOAL, GRID, INK = "#2a7f62", "#c0632c", "#333333", "#d8d8d8", "#222222"


def across(ratio):
    """Where a ratio stands on the axis."""
    bounded = min(max(ratio, LEAST), MOST)
    return LABELS + (WIDTH - LABELS - RIGHT) * math.log(bounded / LEAST) / math.log(MOST / LEAST)


def svg(title, rows):
    """rows: (name, own / best peer, the goal against the best peer or None)."""
    height = TOP + len(rows) * (BAR + GAP) + 12
    out = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{height}" font-family="sans-serif" '
           f'font-size="10" fill="{INK}">',
           f'<rect width="{WIDTH}" height="{height}" fill="white"/>',
           f'<text x="8" y="18" font-size="14" font-weight="bold">{html.escape(title)}</text>',
           f'<text x="8" y="34">time of the library / time of the best peer: left of 1 the library is faster; dark mark: the goal</text>']
    for tick in (0.02, 0.05, 0.1, 0.2, 0.5, 1, 2, 5, 10):
        x = across(tick)
        colour = INK if tick == 1 else GRID
        out.append(f'<line x1="{x:.1f}" x2="{x:.1f}" y1="{TOP - 6}" y2="{height - 8}" stroke="{colour}"/>')
        out.append(f'<text x="{x:.1f}" y="{TOP - 9}" text-anchor="middle">{tick:g}</text>')
    for index, (name, ratio, goal) in enumerate(rows):
        y = TOP + index * (BAR + GAP)
        start, end = sorted((across(1), across(ratio)))
        out.append(f'<text x="{LABELS - 6}" y="{y + BAR - 2}" text-anchor="end">{html.escape(name)}</text>')
        out.append(f'<rect x="{start:.1f}" y="{y}" width="{max(end - start, 1):.1f}" height="{BAR}" '
                   f'fill="{FASTER if ratio <= 1 else SLOWER}"/>')
        if goal is not None:
            x = across(goal)
            out.append(f'<line x1="{x:.1f}" x2="{x:.1f}" y1="{y - 1}" y2="{y + BAR + 1}" stroke="{GOAL}" stroke-width="2"/>')
        out.append(f'<text x="{max(end, across(1)) + 4:.1f}" y="{y + BAR - 2}">{ratio:.2f}</text>')
    return "\n".join([*out, "</svg>"]) + "\n"
