"""What is left of a card and its PINs in the memory of the program, from the home page to the card's end.

The card's PIN of Authentication is locked. Arguments: velmor_send, the folder of the card, its PIN of Qualified, its PUK, a text for each line of what its holder is called and
numbered (joined by newlines), the program with its options.
"""

import os
import subprocess
import sys

import program_memory
from reader import Failure, run

SEND, CARD, ACTUAL, PUK, TEXTS = sys.argv[1:6]
WRONG, FRESH, WRONG_PUK = "95317246", "62059384", "40728519"


def personal_patterns():
    patterns = {text: program_memory.text_pattern(text) for text in TEXTS.split("\n")}
    for name in sorted(os.listdir(CARD)):
        if name.startswith("DG") or name.endswith(".der"):
            with open(os.path.join(CARD, name), "rb") as file:
                patterns[name] = program_memory.bytes_pattern(file.read())
    return patterns


PERSONAL = personal_patterns()
PINS = {digits: program_memory.digits_pattern(digits) for digits in (ACTUAL, WRONG, FRESH, PUK, WRONG_PUK)}


def expect_gone(reader, patterns, when):
    """Soon, for what a queue still carries."""
    pid = reader.process.pid
    for _ in range(20):
        if not any(program_memory.count(pid, patterns).values()):
            return
        reader.listen(0.1)
    raise Failure(f"{when} there is still\n{program_memory.surroundings(pid, patterns)}")


def expect_all(reader, patterns, when):
    found = program_memory.count(reader.process.pid, patterns)
    print(f"{when}: {found}")
    reader.expect(all(found.values()), f"{when} something is not found where it must be: {found}")


def open_pin_page(reader):
    reader.tab_to("Zmień PIN")
    reader.press("Return")
    reader.wait_for_speech("Wprowadź aktualny")


def type_all(reader, actual):
    for digits in (actual, FRESH, FRESH):
        reader.type(digits)
        reader.press("Tab")
    reader.wait_for_speech("Zmień PIN")


def unblock(reader, puk, told):
    """The fresh PIN has four digits, too few to be looked for."""
    reader.tab_to("Odblokuj PIN: certyfikat do identyfikacji i uwierzytelniania")
    reader.press("Return")
    reader.tab_to("Wprowadź ośmiocyfrowy PUK")
    for digits in (puk, "4826", "4826"):
        reader.type(digits)
        reader.press("Tab")
    reader.wait_for_speech("Zmień PIN")
    expect_all(reader, {puk: PINS[puk]}, "typed")
    reader.press("Return")
    reader.wait_for_speech(told)


def back_to_home(reader):
    reader.tab_to("Wróć")
    reader.press("Return")
    reader.wait_for_speech("Twoje dane z velmor")


def open_pin_and_leave(reader):
    back_to_home(reader)
    open_pin_page(reader)
    type_all(reader, FRESH)
    reader.tab_to("Ustawienia")
    reader.press("Return")
    back_to_home(reader)


def visit_pages(reader):
    """The holder's data and the certificates come to more places than the home page."""
    for button in ("Dane z velmor", "Szczegóły: certyfikat do podpisu osobistego"):
        reader.tab_to(button)
        reader.press("Return")
        back_to_home(reader)


def story(reader):
    reader.wait_for_speech("Twoje dane z velmor")
    expect_all(reader, PERSONAL, "home page")
    visit_pages(reader)

    open_pin_page(reader)
    type_all(reader, WRONG)
    expect_all(reader, {name: PINS[name] for name in (WRONG, FRESH)}, "typed")
    reader.press("Return")
    reader.wait_for_speech("Niepoprawna zmiana PIN-u")
    back_to_home(reader)
    expect_gone(reader, PINS, "after a wrong entry, on the home page")

    open_pin_page(reader)
    type_all(reader, ACTUAL)
    reader.press("Return")
    reader.wait_for_speech("PIN został zmieniony")
    expect_gone(reader, PINS, "after a success")

    open_pin_and_leave(reader)
    expect_gone(reader, PINS, "after the settings and back")

    unblock(reader, WRONG_PUK, "Niepoprawne odblokowanie PIN-u")
    # It stays in its field, for the hints of the next visit.
    back_to_home(reader)
    unblock(reader, PUK, "PIN został odblokowany")
    expect_gone(reader, PINS, "after an unblock")

    subprocess.run([SEND, "velmor_manager", "readers", "NO_CARD"], check=True)
    reader.wait_for_speech("Brak połączenia")
    expect_gone(reader, PINS, "after the card has gone")
    expect_gone(reader, PERSONAL, "after the card has gone")


sys.exit(run(sys.argv[6:], story))
