#!/usr/bin/python3
"""Writes the toolbar icons of the workbench as small SVG files into resources/ico.

One consistent set drawn on a 24 x 24 grid with round strokes, so that the icons stay sharp
at any screen density. Run `/usr/bin/python3 tools/make_icons.py` from the project folder and
commit the result; edit the drawings here rather than the SVG files.
"""

import os

INK = "#37474f"
BLUE = "#1e88e5"
GREEN = "#2e7d32"
RED = "#c62828"
ORANGE = "#ef6c00"
PURPLE = "#6a1b9a"
PAPER = "#eceff1"


def line(pts, color=INK, width=1.8, dash=None, fill="none"):
    d = " ".join(f"{x},{y}" for x, y in pts)
    extra = f' stroke-dasharray="{dash}"' if dash else ""
    return (f'<polyline points="{d}" fill="{fill}" stroke="{color}" stroke-width="{width}" '
            f'stroke-linecap="round" stroke-linejoin="round"{extra}/>')


def poly(pts, fill=INK, stroke="none", width=1.5):
    d = " ".join(f"{x},{y}" for x, y in pts)
    return (f'<polygon points="{d}" fill="{fill}" stroke="{stroke}" stroke-width="{width}" '
            f'stroke-linejoin="round"/>')


def rect(x, y, w, h, fill="none", stroke=INK, width=1.6, r=1.5):
    return (f'<rect x="{x}" y="{y}" width="{w}" height="{h}" rx="{r}" fill="{fill}" '
            f'stroke="{stroke}" stroke-width="{width}"/>')


def circle(cx, cy, r, fill="none", stroke=INK, width=1.8):
    return (f'<circle cx="{cx}" cy="{cy}" r="{r}" fill="{fill}" stroke="{stroke}" '
            f'stroke-width="{width}"/>')


def path(d, color=INK, width=1.8, fill="none"):
    return (f'<path d="{d}" fill="{fill}" stroke="{color}" stroke-width="{width}" '
            f'stroke-linecap="round" stroke-linejoin="round"/>')


def text(s, size, y=15.5, color=INK):
    return (f'<text x="12" y="{y}" font-family="DejaVu Sans, sans-serif" font-weight="bold" '
            f'font-size="{size}" text-anchor="middle" fill="{color}">{s}</text>')


def curve(color=GREEN, width=1.8):
    """A spectrum-like curve: a peak on a falling floor."""
    return line([(3, 17), (6, 15), (8, 16), (10, 6), (12, 15), (15, 14), (18, 17), (21, 16)],
                color, width)


def swatch(color):
    return rect(3, 18.5, 18, 3, fill=color, stroke="none", r=1)


def grid(color=INK, width=1.2):
    out = [rect(3, 3, 18, 18, stroke=color, width=width, r=1)]
    for v in (9, 15):
        out.append(line([(v, 3), (v, 21)], color, width))
        out.append(line([(3, v), (21, v)], color, width))
    return out


def magnifier(sign):
    out = [circle(10, 10, 6), line([(14.5, 14.5), (20.5, 20.5)], INK, 2.4)]
    if sign in "+-=":
        out.append(line([(7, 10), (13, 10)], BLUE, 1.8))
    if sign == "+":
        out.append(line([(10, 7), (10, 13)], BLUE, 1.8))
    if sign == "=":
        out[-1] = line([(7, 8.5), (13, 8.5)], BLUE, 1.6)
        out.append(line([(7, 11.5), (13, 11.5)], BLUE, 1.6))
    return out


def arrow_v(x, y1, y2, color=BLUE):
    """A vertical arrow with heads at both ends."""
    return [line([(x, y1), (x, y2)], color),
            line([(x - 3, y1 + 3), (x, y1), (x + 3, y1 + 3)], color),
            line([(x - 3, y2 - 3), (x, y2), (x + 3, y2 - 3)], color)]


def metric(name, size):
    return [rect(1.5, 4.5, 21, 15, fill=PAPER, stroke=PURPLE, width=1.4, r=3),
            text(name, size, y=15, color=PURPLE)]


def tri_left(x):
    return poly([(x, 6), (x, 18), (x - 7, 12)], BLUE)


def tri_right(x):
    return poly([(x, 6), (x, 18), (x + 7, 12)], BLUE)


ICONS = {
    "import": [rect(4, 14, 16, 7, fill=PAPER), line([(12, 2.5), (12, 14)], BLUE, 2.2),
               line([(8, 10), (12, 14), (16, 10)], BLUE, 2.2)],
    "open": [path("M3 7 v12 h18 v-10 h-9 l-2 -2 z", INK, 1.6, PAPER),
             line([(6, 15), (9, 12), (12, 15), (15, 11), (18, 14)], GREEN, 1.6)],
    "options": [circle(12, 12, 3.2)] + [
        line([(12 + 5.2 * c, 12 + 5.2 * s), (12 + 8.4 * c, 12 + 8.4 * s)], INK, 2.6)
        for c, s in [(1, 0), (0.707, 0.707), (0, 1), (-0.707, 0.707), (-1, 0), (-0.707, -0.707),
                     (0, -1), (0.707, -0.707)]] + [circle(12, 12, 6.2, width=1.6)],
    "info": [circle(12, 12, 9, fill=PAPER, stroke=BLUE), line([(12, 11), (12, 17)], BLUE, 2.2),
             circle(12, 7.5, 0.8, fill=BLUE, stroke=BLUE, width=1)],
    "saveas": [path("M4 4 h13 l3 3 v13 h-16 z", INK, 1.6, PAPER), rect(7, 4, 8, 5, r=0.5),
               rect(7, 13, 10, 7, fill="#ffffff", r=0.5)],
    "export": [rect(3, 8, 13, 13, fill=PAPER), line([(10, 14), (21, 3)], BLUE, 2.2),
               line([(14, 3), (21, 3), (21, 10)], BLUE, 2.2)],
    "print": [rect(6, 3, 12, 6, fill="#ffffff"), rect(3, 9, 18, 8, fill=PAPER),
              rect(6, 14, 12, 7, fill="#ffffff"), line([(8.5, 17), (15.5, 17)], INK, 1.2)],
    "first": [rect(4, 6, 2.6, 12, fill=BLUE, stroke="none", r=0.5), tri_left(13), tri_left(20)],
    "rew": [tri_left(12), tri_left(19.5)],
    "pause": [rect(6, 5, 4, 14, fill=ORANGE, stroke="none", r=1),
              rect(14, 5, 4, 14, fill=ORANGE, stroke="none", r=1)],
    "fwd": [tri_right(4.5), tri_right(12)],
    "end": [tri_right(4), tri_right(11), rect(17.4, 6, 2.6, 12, fill=BLUE, stroke="none", r=0.5)],
    "spectrum": [line([(3, 21), (21, 21)], INK, 1.4)] + [
        line([(x, 21), (x, y)], GREEN, 2.2)
        for x, y in [(5, 17), (8, 15), (11, 5), (14, 13), (17, 16), (20, 18)]],
    "oscope": [rect(2.5, 4, 19, 16, fill="#263238", stroke=INK),
               path("M4 12 C 6.5 5, 8.5 5, 11 12 S 15.5 19, 18 12 S 20 8, 20.5 9", "#ffeb3b",
                    1.6)],
    "phase": [line([(3, 12), (21, 12)], INK, 1.1),
              line([(3, 19), (8, 5), (8, 19), (14, 5), (14, 19), (20, 5)], BLUE, 1.7)],
    "waterfall": [rect(3, 3 + 4.5 * i, 18, 4.5, fill=c, stroke="none", r=0)
                  for i, c in enumerate(["#283593", "#00897b", "#fdd835", "#e53935"])]
                 + [rect(3, 3, 18, 18, width=1.4, r=1)],
    "allopen": [rect(3, 3, 8, 8, fill=PAPER), rect(13, 3, 8, 8, fill=PAPER),
                rect(3, 13, 8, 8, fill=PAPER), rect(13, 13, 8, 8, fill=PAPER)],
    "linecolor": [line([(3, 14), (8, 6), (13, 12), (20, 3)], INK, 2.0), swatch(RED)],
    "backcolor": [rect(3, 3, 18, 13, fill="#90caf9", stroke=INK), swatch(BLUE)],
    "gridcolor": grid(INK, 1.1)[:1] + [line([(9, 3), (9, 16)], ORANGE, 1.3),
                                       line([(15, 3), (15, 16)], ORANGE, 1.3),
                                       line([(3, 9.5), (21, 9.5)], ORANGE, 1.3)]
    + [rect(3, 3, 18, 13, width=1.2, r=1), swatch(ORANGE)],
    "showgrid": grid(INK, 1.3),
    "asline": [line([(3, 21), (21, 21)], INK, 1.2), curve()],
    "asbar": [line([(3, 21), (21, 21)], INK, 1.2),
              line([(4, 21), (4, 16), (8, 16), (8, 6), (12, 6), (12, 14), (16, 14), (16, 18),
                    (20, 18), (20, 21)], GREEN, 1.7)],
    "xlin": [line([(3, 15), (21, 15)], INK, 1.6)]
    + [line([(x, 12), (x, 18)], BLUE, 1.6) for x in (4, 8.5, 13, 17.5)]
    + [line([(21, 12), (21, 18)], BLUE, 1.6)],
    "xlog": [line([(3, 15), (21, 15)], INK, 1.6)]
    + [line([(x, 12), (x, 18)], BLUE, 1.6) for x in (3.5, 10, 13.8, 16.5, 18.5, 20, 21)],
    "ylin": [line([(9, 3), (9, 21)], INK, 1.6)]
    + [line([(6, y), (12, y)], BLUE, 1.6) for y in (3.5, 8, 12.5, 17, 21)],
    "ylog": [line([(9, 3), (9, 21)], INK, 1.6)]
    + [line([(6, y), (12, y)], BLUE, 1.6) for y in (20.5, 14, 10.2, 7.5, 5.5, 4, 3)],
    "autoscale": [line([(5, 3), (5, 21), (21, 21)], INK, 1.4)] + arrow_v(13, 4, 19),
    "autotune": [circle(12, 13, 7.5, fill=PAPER), line([(12, 13), (16.5, 8)], RED, 2.2),
                 line([(12, 2), (12, 4)], INK, 1.6), line([(3.5, 6), (5, 7.2)], INK, 1.6),
                 line([(20.5, 6), (19, 7.2)], INK, 1.6)],
    "span": [line([(4, 4), (4, 20)], INK, 1.8), line([(20, 4), (20, 20)], INK, 1.8),
             line([(6, 12), (18, 12)], BLUE, 1.8), line([(9, 9), (6, 12), (9, 15)], BLUE, 1.8),
             line([(15, 9), (18, 12), (15, 15)], BLUE, 1.8)],
    "gprfilter": [path("M3 4 h18 l-7 8 v7 l-4 2 v-9 z", INK, 1.6, "#b3e5fc")],
    "thd": metric("THD", 8.5),
    "thdn": metric("THD+N", 6),
    "sfdr": metric("SFDR", 7),
    "sinad": metric("SINAD", 5.6),
    "snr": metric("SNR", 8),
    "enob": metric("ENOB", 6.8),
    "whitening": [line([(3, 9), (5, 5), (7, 11), (9, 4), (11, 10), (13, 6)], INK, 1.4),
                  line([(13, 6), (21, 6)], INK, 1.4),
                  line([(3, 18), (21, 18)], BLUE, 2.2)],
    "fftfilter": [line([(3, 20), (21, 20)], INK, 1.2),
                  path("M3 19 C 7 19, 7 6, 10 6 L 14 6 C 17 6, 17 19, 21 19", ORANGE, 2.0)],
    "reference": [line([(3, 17), (6, 14), (9, 15), (11, 7), (13, 15), (16, 13), (21, 16)], RED,
                       1.6, dash="2.2 2"), curve()],
    "level": [curve(GREEN, 1.4), line([(3, 9), (21, 9)], RED, 1.8, dash="3 2")],
    "markers": [curve(GREEN, 1.5), poly([(10, 1.5), (13, 4.5), (10, 7.5), (7, 4.5)], RED)],
    "text": [line([(5, 5), (19, 5)], INK, 2.6), line([(12, 5), (12, 20)], INK, 2.6),
             line([(9, 20), (15, 20)], INK, 1.8)],
    "zoomin": magnifier("+"),
    "zoomout": magnifier("-"),
    "nozoom": magnifier("="),
    "vertzoom": [circle(9, 9, 5.5), line([(13, 13), (17, 17)], INK, 2.2)] + arrow_v(20, 3, 21),
    "flip": [line([(3, 12), (21, 12)], INK, 1.2, dash="2 2"),
             path("M4 9 C 7 3, 10 3, 12 8", BLUE, 1.8), path("M12 16 C 14 21, 17 21, 20 15", RED,
                                                                 1.8)],
    "gain": [poly([(5, 4), (5, 20), (19, 12)], PAPER, INK, 1.6), line([(2, 12), (5, 12)], INK),
             line([(19, 12), (22, 12)], INK)],
    "maxa": [line([(3, 4), (21, 4)], RED, 1.6, dash="3 2"),
             path("M3 13 C 6 4, 9 4, 12 13 S 18 22, 21 13", GREEN, 1.8)],
    "mina": [line([(3, 20), (21, 20)], RED, 1.6, dash="3 2"),
             path("M3 11 C 6 2, 9 2, 12 11 S 18 20, 21 11", GREEN, 1.8)],
    "ptp": [path("M2 12 C 5 3, 8 3, 11 12 S 17 21, 20 12", GREEN, 1.6)] + arrow_v(21, 3.5, 20.5,
                                                                                 RED),
    "cursor": [circle(12, 12, 6.5, stroke=BLUE, width=1.6), line([(12, 2), (12, 22)], INK, 1.6),
               line([(2, 12), (22, 12)], INK, 1.6)],
    "palette": [rect(3, 4 + 2 * i, 18, 2, fill=c, stroke="none", r=0)
                for i, c in enumerate(["#0d0887", "#5c01a6", "#9c179e", "#cc4778", "#ed7953",
                                       "#fdb42f", "#f0f921", "#fcffa4"])]
               + [rect(3, 4, 18, 16, width=1.4, r=1)],
}

# Toolbar key -> icon. Buttons of the other views reuse the Spectrum's drawings.
KEYS = {
    "Import": "import", "Open": "open", "Options": "options", "Info": "info",
    "Save as": "saveas", "Export": "export", "Print": "print",
    "First": "first", "Rew": "rew", "Pause": "pause", "Fwd": "fwd", "End": "end",
    "Spectrum": "spectrum", "O-scope": "oscope", "Phase": "phase", "Waterfall": "waterfall",
    "All open": "allopen",
    "FFT_LineColor": "linecolor", "FFT_BackColor": "backcolor", "FFT_GridColor": "gridcolor",
    "FFT_ShowGrid": "showgrid", "FFT_AsLine": "asline", "FFT_AsBar": "asbar",
    "FFT_x_lin": "xlin", "FFT_x_log": "xlog", "FFT_y_lin": "ylin", "FFT_y_log": "ylog",
    "Autoscale": "autoscale", "Autotune": "autotune", "Span": "span", "GPR Filter": "gprfilter",
    "THD": "thd", "THD+N": "thdn", "SFDR": "sfdr", "SINAD": "sinad", "SNR": "snr", "ENOB": "enob",
    "Whitening": "whitening", "FFT Filter": "fftfilter", "Reference": "reference",
    "Level": "level", "Markers": "markers", "Text": "text",
    "LC_O": "linecolor", "BC_O": "backcolor", "GC_O": "gridcolor", "SG_O": "showgrid",
    "ZoomIn": "zoomin", "ZoomOut": "zoomout", "NoZoom": "nozoom", "VertZoom": "vertzoom",
    "Flip": "flip", "Gain": "gain", "MaxA": "maxa", "MinA": "mina", "PtP": "ptp",
    "Cursor": "cursor", "Reference_O": "reference", "Text_O": "text",
    "LC_P": "linecolor", "BC_P": "backcolor", "GC_P": "gridcolor", "SG_P": "showgrid",
    "Ref_P": "reference", "T_P": "text", "Palette": "palette", "T_W": "text",
}


def svg(parts):
    body = "\n  ".join(p for p in parts if p)
    return ('<svg xmlns="http://www.w3.org/2000/svg" width="24" height="24" '
            f'viewBox="0 0 24 24">\n  {body}\n</svg>\n')


def main():
    root = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
    out = os.path.join(root, "resources", "ico")
    os.makedirs(out, exist_ok=True)
    for name, parts in sorted(ICONS.items()):
        with open(os.path.join(out, name + ".svg"), "w", encoding="utf-8") as f:
            f.write(svg(parts))
    missing = sorted(set(KEYS.values()) - set(ICONS))
    if missing:
        raise SystemExit("no drawing for: " + ", ".join(missing))
    # The table the workbench compiles in: toolbar key -> file.
    with open(os.path.join(root, "src", "app", "toolbar_icons.qrc"), "w", encoding="utf-8") as f:
        f.write('<!DOCTYPE RCC>\n<RCC version="1.0">\n<qresource prefix="/ico">\n')
        for name in sorted(ICONS):
            f.write(f'  <file alias="{name}.svg">../../resources/ico/{name}.svg</file>\n')
        f.write("</qresource>\n</RCC>\n")
    with open(os.path.join(root, "src", "app", "toolbar_icon_names.inc"), "w",
              encoding="utf-8") as f:
        f.write("// Generated by tools/make_icons.py: toolbar key -> icon file under :/ico.\n")
        for key, name in sorted(KEYS.items()):
            f.write(f'{{"{key}", "{name}"}},\n')


if __name__ == "__main__":
    main()
