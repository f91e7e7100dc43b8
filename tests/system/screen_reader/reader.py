"""What a screen reader sees of a program, and the keys of its user.

The program is known by what it tells over AT-SPI alone: events of the focus, and the tree of what is shown. Keys go to
the display as a keyboard's do. Nothing else of the program is touched.
"""

import subprocess
import sys
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

PATIENCE = 20.0  # seconds


class Failure(Exception):
    pass


class Reader:
    def __init__(self, program):
        self.spoken = []  # (name, description, role) of each thing that got the focus
        self.edits = []  # (role, text) of each change of a text, typed or not
        self.focus = None
        Atspi.init()
        self.listener = Atspi.EventListener.new(self._heard, None)
        self.listener.register("object:state-changed:focused")
        self.edit_listener = Atspi.EventListener.new(self._heard_edit, None)
        self.edit_listener.register("object:text-changed")
        self.process = subprocess.Popen(program)
        self.application = self.wait_for(self._find_application, "the program in the tree")
        window = self.wait_for(self._find_window, "its window on the display")
        # What a window manager does with a new window.
        subprocess.run(["xdotool", "windowfocus", "--sync", window], check=True, stdout=subprocess.DEVNULL)

    def _heard(self, event, _data):
        if not event.detail1:
            return
        source = event.source
        try:
            self.focus = source
            self.spoken.append((source.get_name(), source.get_description(), source.get_role_name()))
        except GLib.Error:
            pass  # gone again already

    def _heard_edit(self, event, _data):
        try:
            self.edits.append((event.source.get_role_name(), str(event.any_data)))
        except GLib.Error:
            self.edits.append(("gone", str(event.any_data)))

    def listen(self, seconds=0.05):
        context = GLib.MainContext.default()
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            while context.iteration(False):
                pass
            time.sleep(0.005)

    def wait_for(self, question, what):
        end = time.monotonic() + PATIENCE
        while time.monotonic() < end:
            answer = question()
            if answer:
                return answer
            if self.process.poll() is not None:
                raise Failure(f"the program has ended with {self.process.returncode}, before {what}")
            self.listen()
        raise Failure(f"no sign of {what}; last spoken: {self.spoken[-3:]}\n{self.everything()}")

    def _find_application(self):
        desktop = Atspi.get_desktop(0)
        for i in range(desktop.get_child_count()):
            child = desktop.get_child_at_index(i)
            if child and child.get_process_id() == self.process.pid:
                return child
        return None

    def _find_window(self):
        found = subprocess.run(
            ["xdotool", "search", "--onlyvisible", "--pid", str(self.process.pid)], capture_output=True, text=True
        )
        return found.stdout.split()[-1] if found.stdout.split() else None

    # -- keys

    def press(self, key, times=1):
        for _ in range(times):
            subprocess.run(["xdotool", "key", "--clearmodifiers", key], check=True)
            self.listen()

    def type(self, text):
        for character in text:
            self.press(character)

    def tab_to(self, name, most=60):
        """Goes on by Tab until something of this name has the focus."""
        for _ in range(most):
            heard = len(self.spoken)
            self.press("Tab")
            end = time.monotonic() + 2
            while len(self.spoken) == heard and time.monotonic() < end:
                self.listen(0.02)
            if self.spoken and self.spoken[-1][0].strip() == name:
                return
        raise Failure(f"no Tab leads to {name!r}; heard: {[entry[0] for entry in self.spoken[-most:]]}")

    # -- what is said and shown

    def wait_for_speech(self, part):
        self.wait_for(lambda: self.spoken and part in self.spoken[-1][0], f"the focus on {part!r}")
        return self.spoken[-1]

    def focused_text(self):
        """Content of the field with the focus, as it is read out."""
        text = self.focus.get_text_iface()
        return Atspi.Text.get_text(text, 0, Atspi.Text.get_character_count(text)) if text else ""

    def focused_length(self):
        text = self.focus.get_text_iface()
        return Atspi.Text.get_character_count(text) if text else 0

    def everything(self, node=None, depth=0):
        """Names, descriptions and texts of all that is showing."""
        if node is None:
            node = getattr(self, "application", None)
            if node is None:
                return ""
        lines = []
        try:
            if depth > 1 and not node.get_state_set().contains(Atspi.StateType.SHOWING):
                return ""
            line = " | ".join([node.get_role_name(), node.get_name(), node.get_description() or ""])
            text = node.get_text_iface()
            if text:
                line += " | " + Atspi.Text.get_text(text, 0, Atspi.Text.get_character_count(text))
            lines.append("  " * depth + line)
            for i in range(node.get_child_count()):
                child = node.get_child_at_index(i)
                if child:
                    lines.append(self.everything(child, depth + 1))
        except GLib.Error as error:
            lines.append(f"({error.message})")
        return "\n".join(line for line in lines if line)

    def expect(self, condition, message):
        if not condition:
            raise Failure(f"{message}; last spoken: {self.spoken[-4:]}\n{self.everything()}")

    def expect_silence_about(self, secrets):
        shown = self.everything() + "\n".join(" ".join(entry) for entry in self.spoken)
        for secret in secrets:
            self.expect(secret not in shown, f"{secret} can be read")
        # Of what is typed into such a field its length is told, and not one digit.
        secret_edits = [text for role, text in self.edits if role != "label"]
        self.expect(secret_edits, "no change of a field is told at all")
        for text in secret_edits:
            self.expect(set(text) <= {"•"}, f"{text!r} is told of a field")
            self.expect(len(text) <= 8, f"{len(text)} characters are told of a field that holds eight")

    def end(self):
        if self.process.poll() is None:
            self.process.terminate()
            try:
                self.process.wait(10)
            except subprocess.TimeoutExpired:
                self.process.kill()


def run(program, story):
    """Runs a story of one reader; the exit code tells how it went."""
    reader = None
    try:
        reader = Reader(program)
        story(reader)
        return 0
    except Failure as failure:
        print(f"FAIL: {failure}", file=sys.stderr)
        return 1
    finally:
        if reader:
            reader.end()
