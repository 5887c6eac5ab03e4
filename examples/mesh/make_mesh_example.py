#!/usr/bin/env python3
"""Writes the small mesh files of the mesh example: one torus (a stand-in for a rotor hub
ring) in each format ixocore reads.

    examples/mesh/make_mesh_example.py [OUTPUT_DIR] [--segments N]

Files written (the sample scene ../mesh.json uses torus.ply, torus_binary.stl and
torus.wrl, kept in the repository at --segments 24):
    torus_binary.stl   binary STL (facet normals from the geometry)
    torus_ascii.stl    ASCII STL
    torus.ply          binary little-endian PLY with quad faces (read as triangle fans)
    torus_ascii.ply    ascii PLY with quad faces
    torus.wrl          VRML 1.0 with two sections (outer and inner half), normals given
"""
import argparse
import math
import os
import struct


def torus(segments, major=1.0, minor=0.3):
    """Grid points of a torus and its quads, counter-clockwise seen from outside."""
    rings = segments
    sides = max(3, segments // 2)
    points, normals = [], []
    for i in range(rings):
        u = 2 * math.pi * i / rings
        for j in range(sides):
            v = 2 * math.pi * j / sides
            n = (math.cos(v) * math.cos(u), math.cos(v) * math.sin(u), math.sin(v))
            r = major + minor * math.cos(v)
            points.append((r * math.cos(u), r * math.sin(u), minor * math.sin(v)))
            normals.append(n)
    quads = []
    for i in range(rings):
        for j in range(sides):
            a = i * sides + j
            b = ((i + 1) % rings) * sides + j
            c = ((i + 1) % rings) * sides + (j + 1) % sides
            d = i * sides + (j + 1) % sides
            quads.append((a, b, c, d))
    return points, normals, quads


def facet_normal(p0, p1, p2):
    u = [p1[k] - p0[k] for k in range(3)]
    v = [p2[k] - p0[k] for k in range(3)]
    n = (u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0])
    length = math.sqrt(sum(c * c for c in n)) or 1.0
    return tuple(c / length for c in n)


def triangles(quads):
    for a, b, c, d in quads:
        yield (a, b, c)
        yield (a, c, d)


def write_stl(points, quads, path, binary):
    tris = list(triangles(quads))
    if binary:
        with open(path, "wb") as f:
            f.write(b"ixocore mesh example torus".ljust(80, b" "))
            f.write(struct.pack("<I", len(tris)))
            for t in tris:
                p = [points[i] for i in t]
                f.write(struct.pack("<3f", *facet_normal(*p)))
                for q in p:
                    f.write(struct.pack("<3f", *q))
                f.write(b"\0\0")
        return
    with open(path, "w") as f:
        f.write("solid torus\n")
        for t in tris:
            p = [points[i] for i in t]
            f.write("  facet normal %e %e %e\n    outer loop\n" % facet_normal(*p))
            for q in p:
                f.write("      vertex %e %e %e\n" % q)
            f.write("    endloop\n  endfacet\n")
        f.write("endsolid torus\n")


def write_ply(points, quads, path, binary):
    header = (
        "ply\nformat %s 1.0\ncomment ixocore mesh example\n"
        "element vertex %d\nproperty float x\nproperty float y\nproperty float z\n"
        "element face %d\nproperty list uchar int vertex_indices\nend_header\n"
        % ("binary_little_endian" if binary else "ascii", len(points), len(quads))
    )
    with open(path, "wb") as f:
        f.write(header.encode())
        for p in points:
            f.write(struct.pack("<3f", *p) if binary else ("%g %g %g\n" % p).encode())
        for q in quads:
            f.write(struct.pack("<B4i", 4, *q) if binary else ("4 %d %d %d %d\n" % q).encode())


def write_vrml(points, normals, quads, path):
    half = len(quads) // 2
    with open(path, "w") as f:
        f.write("#VRML V1.0 ascii\nSeparator {\n")
        for colour, part in (("0.8 0.2 0.2", quads[:half]), ("0.2 0.4 0.8", quads[half:])):
            used = sorted({i for q in part for i in q})
            local = {g: k for k, g in enumerate(used)}
            f.write("  Material { diffuseColor %s }\n  Coordinate3 {\n    point [\n" % colour)
            for g in used:
                f.write("      %g %g %g,\n" % points[g])
            f.write("    ]\n  }\n  Normal {\n    vector [\n")
            for g in used:
                f.write("      %g %g %g,\n" % normals[g])
            f.write("    ]\n  }\n  IndexedFaceSet {\n    coordIndex [\n")
            for q in part:
                f.write("      %d, %d, %d, %d, -1,\n" % tuple(local[i] for i in q))
            f.write("    ]\n    normalIndex [\n")
            for q in part:
                f.write("      %d, %d, %d, %d, -1,\n" % tuple(local[i] for i in q))
            f.write("    ]\n  }\n")
        f.write("}\n")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("output", nargs="?", default=os.path.dirname(os.path.abspath(__file__)))
    parser.add_argument("--segments", type=int, default=48)
    args = parser.parse_args()
    os.makedirs(args.output, exist_ok=True)
    points, normals, quads = torus(max(3, args.segments))
    out = lambda name: os.path.join(args.output, name)
    write_stl(points, quads, out("torus_binary.stl"), True)
    write_stl(points, quads, out("torus_ascii.stl"), False)
    write_ply(points, quads, out("torus.ply"), True)
    write_ply(points, quads, out("torus_ascii.ply"), False)
    write_vrml(points, normals, quads, out("torus.wrl"))
    print("wrote %d points, %d quads to %s" % (len(points), len(quads), args.output))


if __name__ == "__main__":
    main()
