"""The ear of the stories: tells what a screen reader would say of one program, known by its process.

Usage: ear.py PID. Answers each line of input, a number, with one line of JSON, as soon as the program has rung its bell, a
text that comes at that place: the list of what was heard since the last. That is what got the focus, with the named groups
that were entered with it; windows that came up; changes of the name, the state, the text or the choice of what has the
focus.
"""

import json
import os
import sys

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

EVENTS = (
    "object:state-changed:focused",
    "object:state-changed:checked",
    "object:state-changed:selected",
    "object:property-change:accessible-name",
    "object:property-change:accessible-description",
    "object:text-changed",
    "object:text-caret-moved",
    "object:text-selection-changed",
    "window:activate",
)
STATES = ("CHECKED", "ENABLED", "EDITABLE", "EXPANDED", "EXPANDABLE", "COLLAPSED", "SELECTED", "FOCUSED")
GROUPS = ("panel", "grouping")
BELL = 1000000  # no text is that long


class Ear:
    def __init__(self, pid):
        self.pid = pid
        self.heard = []
        self.focus = None
        self.groups = []  # around what has the focus, from outside
        Atspi.init()
        # An answer that comes late on a busy machine is one; by itself the library takes it for none after 0.8 s.
        Atspi.set_timeout(-1, -1)
        self.listener = Atspi.EventListener.new(self.hear, None)
        for event in EVENTS:
            self.listener.register(event)
        self.application = None
        self.events = []  # kept, and not yet told
        self.bell = 0  # the last that was rung

    def find_application(self):
        desktop = Atspi.get_desktop(0)
        for i in range(desktop.get_child_count()):
            child = desktop.get_child_at_index(i)
            if child and child.get_process_id() == self.pid:
                self.application = child
                # What was told a moment ago may be another by now.
                child.set_cache_mask(Atspi.Cache.NONE)
        return self.application

    # -- what is told of an object

    def describe(self, kind, source):
        states = source.get_state_set()
        role = source.get_role_name()
        text = source.get_text_iface()
        content = Atspi.Text.get_text(text, 0, Atspi.Text.get_character_count(text)) if text else ""
        return {
            "kind": kind,
            "path": source.path,
            "role": role,
            "name": source.get_name() or "",
            "description": source.get_description() or "",
            "states": [name for name in STATES if states.contains(getattr(Atspi.StateType, name))],
            "text": "" if role == "combo box" else content,
            "groups": [],
        }

    def at_caret(self, source):
        """What is selected in a text, or the line of the caret."""
        told = self.describe("caret", source)
        text = source.get_text_iface()
        if Atspi.Text.get_n_selections(text):
            told["text"] = Atspi.Text.get_text(text, *self.selection(text))
        else:
            at = Atspi.Text.get_caret_offset(text)
            told["text"] = Atspi.Text.get_string_at_offset(text, at, Atspi.TextGranularity.LINE).content
        return told

    @staticmethod
    def selection(text):
        selected = Atspi.Text.get_selection(text, 0)
        return selected.start_offset, selected.end_offset

    def enter_groups(self, source):
        """Names of the groups around the focus that were not around it before."""
        around = []
        parent = source.get_parent()
        while parent and not parent.path.endswith("/root"):
            name = parent.get_name() if parent.get_role_name() in GROUPS else ""
            if name:
                around.insert(0, (parent.path, name))
            parent = parent.get_parent()
        entered = [name for path, name in around if path not in self.groups]
        self.groups = [path for path, _ in around]
        return entered

    def hear(self, event, _data):
        """Only keeps it: what is asked of the program in here would let later events overtake it."""
        if event.type.startswith("object:text-changed") and event.detail1 > BELL:
            self.bell = event.detail1
        else:
            self.events.append((event.type, event.source, event.detail1, event.any_data))

    def note(self, kind, source, detail, data):
        if kind == "object:state-changed:focused":
            if detail:
                self.focus = source.path
                told = self.describe("focus", source)
                told["groups"] = self.enter_groups(source)
                self.heard.append(told)
        elif kind == "window:activate":
            self.heard.append(self.describe("window", source))
            self.groups = []
        elif kind == "object:state-changed:selected":
            if detail:
                self.heard.append(self.describe("choice", source))
        elif kind.startswith("object:text-changed"):
            if source.get_role_name() != "label":
                told = self.describe("edit", source)
                told["text"] = str(data)
                self.heard.append(told)
        elif kind in ("object:text-caret-moved", "object:text-selection-changed"):
            if source.path == self.focus:
                self.heard.append(self.at_caret(source))
        elif source.path == self.focus:
            self.heard.append(self.describe("change", source))

    # -- what is asked

    def answer(self, bell):
        """All that the program has sent before it rang."""
        context = GLib.MainContext.default()
        while self.bell != bell:
            context.iteration(True)
        events, self.events = self.events, []
        for kind, source, detail, data in events:
            try:
                if source.get_process_id() == self.pid:
                    self.note(kind, source, detail, data)
            except GLib.Error as error:
                self.heard.append({"kind": "gone", "name": error.message, "path": source.path})
        print(json.dumps(self.heard, ensure_ascii=False), flush=True)
        self.heard = []


def main():
    ear = Ear(int(sys.argv[1]))

    def asked(_channel, _condition):
        bell = sys.stdin.readline()
        if bell and (ear.application or ear.find_application()):
            ear.answer(int(bell))
        elif bell:
            print("null", flush=True)
        return True

    channel = GLib.IOChannel.unix_new(sys.stdin.fileno())
    GLib.io_add_watch(channel, GLib.PRIORITY_DEFAULT, GLib.IO_IN, asked)
    # A watch of its own, since that other one is not called while it waits for a bell; of a program that has gone, none comes.
    GLib.io_add_watch(channel, GLib.PRIORITY_DEFAULT, GLib.IO_HUP, lambda *_: os._exit(0))
    GLib.MainLoop().run()


main()
