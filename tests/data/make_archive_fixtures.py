#!/usr/bin/env python3
"""Writes keyed archives the way the platform's own archiver lays them out, so that the reader
is proven against files it did not write itself. Run from anywhere; writes beside this script.

    python3 tests/data/make_archive_fixtures.py
"""
import os
import plistlib
from plistlib import UID

HERE = os.path.dirname(os.path.abspath(__file__))


class Archive:
    """A hand-built keyed archive: objects by UID, one class description per class."""

    def __init__(self):
        self.objects = ["$null"]
        self.classes = {}

    def add(self, obj):
        self.objects.append(obj)
        return UID(len(self.objects) - 1)

    def klass(self, name, chain=None):
        if name not in self.classes:
            self.classes[name] = self.add({"$classname": name, "$classes": chain or [name, "NSObject"]})
        return self.classes[name]

    def obj(self, name, fields, chain=None):
        # The platform reserves the object's place before it encodes the fields.
        uid = self.add(None)
        body = dict(fields)
        body["$class"] = self.klass(name, chain)
        self.objects[uid.data] = body
        return uid

    def array(self, uids, mutable=True):
        name = "NSMutableArray" if mutable else "NSArray"
        chain = [name, "NSArray", "NSObject"] if mutable else ["NSArray", "NSObject"]
        return self.obj(name, {"NS.objects": list(uids)}, chain)

    def nsstring(self, text):
        return self.obj("NSMutableString", {"NS.string": text},
                        ["NSMutableString", "NSString", "NSObject"])

    def string(self, text):
        return self.add(text)

    def data(self, raw, wrapped=False):
        if wrapped:
            return self.obj("NSMutableData", {"NS.data": raw}, ["NSMutableData", "NSData", "NSObject"])
        return self.add(raw)

    def dictionary(self, pairs):
        keys = [self.string(k) for k, _ in pairs]
        values = [v for _, v in pairs]
        return self.obj("NSDictionary", {"NS.keys": keys, "NS.objects": values})

    def bytes(self, top):
        return plistlib.dumps({"$version": 100000, "$archiver": "NSKeyedArchiver",
                               "$top": top, "$objects": self.objects},
                              fmt=plistlib.FMT_BINARY, sort_keys=False)


def write(name, data):
    with open(os.path.join(HERE, name), "wb") as f:
        f.write(data)


def platform_tab():
    """A tab with shared class descriptions, mutable arrays, string objects, $null references,
    one column object referenced from two rows, and an old-style single lyric."""
    a = Archive()
    dash = a.string("\u2014")
    items_top = a.array([a.string("3"), dash, a.nsstring("h"), dash, a.string("-2"), a.string("0")])
    shared_column = a.obj("Lutegrid.TabColumnData", {"colikey": items_top, "chnmkey": a.nsstring("Am7")})
    bar = a.string("|")
    bar_column = a.obj("Lutegrid.TabColumnData",
                       {"colikey": a.array([bar] * 6, mutable=False), "chnmkey": UID(0)})
    odd_column = a.obj("Lutegrid.TabColumnData",
                       {"colikey": a.array([a.string("12"), a.string("zz"), dash, dash, dash,
                                            a.string("99999999999999999999")]),
                        "chnmkey": UID(0)})
    row1 = a.obj("Lutegrid.TabRowData", {
        "cdkey": a.array([shared_column, bar_column]),
        "lkey": a.string("first line"),
        "lmkey": a.array([a.string("first line"), a.nsstring("second line")]),
    })
    row2 = a.obj("Lutegrid.TabRowData", {
        "cdkey": a.array([odd_column, shared_column]),
        "lkey": a.string(" old lyric "),
    })
    tab = a.obj("Lutegrid.TabData", {
        "trk": a.array([row1, row2]),
        "snkey": a.array([a.string(n) for n in ["D", "A", "D", "G", "B", "E3"]]),
        "cftkey": 2,
        "lcszkey": 500,
        "introkey": a.nsstring("Intro: let ring"),
        "tempokey": -7,
        "plbkoptionskey": a.string('{"playbackSpeed":96,"playbackColumnsInBeat":2,'
                                   '"playbackByMeasure":true,"playbackBeatsPerMeasure":3,'
                                   '"loopPlayback":false}'),
    })
    write("platform_tab.lgrdi", a.bytes({"root": tab}))


def platform_settings():
    """data.plist written key by key, with chord objects in a mutable array."""
    a = Archive()
    chord = a.obj("Lutegrid.ChordShortcut", {
        "nmkey": a.nsstring("Mine"),
        "colikey": a.array([a.string(t) for t in ["0", "2", "2", "\u2014", "x", "3"]]),
    })
    recent = a.obj("Lutegrid.RecentChord", {"nmkey": a.string("G"), "customkey": False})
    recent_custom = a.obj("Lutegrid.RecentChord", {"nmkey": a.string("Mine"), "customkey": True})
    top = {
        "firsttabkey": True,
        "tabcreatecountkey": 7,
        "notk": True,
        "lastfretcountkey": 30,
        "autocursoramntkey": 2,
        "playsoundskey": True,
        "showcolheaderskey": True,
        "appearancekey": 2,
        "lastrrtKey": 1700000000.5,
        "rcsck": a.array([recent, recent_custom]),
        "ccsck": a.array([chord]),
    }
    write("platform_settings.plist", a.bytes(top))


def nested_archive():
    """An archive whose root dictionary holds another archive as data, once as a plain data
    object and once wrapped in an NSData object, as the label and chord stores do."""
    inner = Archive()
    chord = inner.obj("Lutegrid.ChordShortcut", {
        "nmkey": inner.string("Inner"),
        "colikey": inner.array([inner.string("1")] * 4),
    })
    inner_bytes = inner.bytes({"root": chord})
    a = Archive()
    root = a.dictionary([("plain", a.data(inner_bytes)), ("wrapped", a.data(inner_bytes, True)),
                         ("count", a.add(3)), ("nothing", UID(0))])
    write("nested_archive.plist", a.bytes({"root": root}))


def hostile():
    """Archives that must read as unreadable, quickly and without a crash."""
    a = Archive()
    loop = a.add(None)
    a.objects[loop.data] = {"NS.objects": [loop], "$class": a.klass("NSArray")}
    write("hostile_cycle.plist", a.bytes({"root": loop}))

    a = Archive()
    root = a.obj("Lutegrid.TabData", {"trk": UID(999)})
    write("hostile_past_end.plist", a.bytes({"root": root}))

    a = Archive()
    previous = a.array([])
    for _ in range(10000):
        previous = a.array([previous])
    write("hostile_deep.plist", a.bytes({"root": previous}))

    # One list shared twice at every level: 41 lists in the file, 2^40 leaves once copied out.
    a = Archive()
    shared = []
    for _ in range(40):
        shared = [shared, shared]
    root = a.obj("Lutegrid.TabData", {"trk": shared})
    write("hostile_expansion.plist", a.bytes({"root": root}))

    # Few bytes, many cells: a thousand references to a row of two thousand references to
    # one column of ten cells makes twenty million cells.
    a = Archive()
    column = a.obj("Lutegrid.TabColumnData", {"colikey": a.array([a.string("5")] * 10), "chnmkey": UID(0)})
    row = a.obj("Lutegrid.TabRowData", {"cdkey": a.array([column] * 2000)})
    root = a.obj("Lutegrid.TabData", {"trk": a.array([row] * 1000)})
    write("hostile_shared_rows.lgrdi", a.bytes({"root": root}))

    # Folder labels where two thousand tabs all point at one list of a thousand labels.
    inner = Archive()
    labels = inner.array([inner.string("L%d" % i) for i in range(1000)])
    root = inner.dictionary([("Tab %d" % i, labels) for i in range(2000)])
    outer = Archive()
    data = outer.data(inner.bytes({"root": root}))
    write("hostile_shared_labels.plist", outer.bytes({"localtgmpKey": data}))

    # A key with a NUL in it, as UTF-16 and as ASCII.
    a = Archive()
    root = a.obj("Lutegrid.TabData", {"tr\u00e9\u0000k": UID(0), "trk\u0000": UID(0)})
    write("hostile_nul_key.plist", a.bytes({"root": root}))


if __name__ == "__main__":
    platform_tab()
    platform_settings()
    nested_archive()
    hostile()
