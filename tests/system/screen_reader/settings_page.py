"""Connects a browser and changes the other options by keyboard and ear alone. Arguments: the profile's user.js, the
program with its options."""

import sys

from reader import Atspi, run

preferences = sys.argv[1]
FIREFOX = "Przeglądarce Firefox"
OTHERS = "Przeglądarkach: Chrome, Chromium, Edge"
NO_CAN = "Wyłącz możliwość zapamiętywania numeru CAN"
CSP = "Używaj starszego mechanizmu (CSP)\ndla certyfikatów kwalifikowanych"


def written():
    try:
        with open(preferences, encoding="utf-8") as file:
            return file.read()
    except FileNotFoundError:
        return ""


def next_stop(reader, name):
    reader.tab_to(name, most=1)


def at_box(reader, ticked):
    reader.expect(reader.spoken[-1][2] == "check box", "no check box has the focus")
    state = reader.focus.get_state_set().contains(Atspi.StateType.CHECKED)
    reader.expect(state == ticked, f"{reader.spoken[-1][0]!r} is {'' if state else 'not '}ticked")


def toggle(reader, ticked):
    reader.press("space")
    reader.wait_for(
        lambda: reader.focus.get_state_set().contains(Atspi.StateType.CHECKED) == ticked, "the change of the box"
    )


def press_button(reader):
    next_stop(reader, "Ustaw")
    reader.expect(reader.spoken[-1][1] == "zapisuje zmiany", "what the button is for is not told")
    reader.press("space")


def back(reader):
    next_stop(reader, "Wróć")
    reader.press("space")
    reader.wait_for(lambda: "Integracja velmor" in reader.everything(), "the settings page")


def set_firefox(reader, before, report, value):
    reader.tab_to(FIREFOX)
    at_box(reader, before)
    toggle(reader, not before)
    next_stop(reader, OTHERS)
    at_box(reader, False)
    press_button(reader)
    reader.wait_for(lambda: any(entry[0] == "Proszę czekać..." for entry in reader.spoken), "the word to wait")
    name, _, role = reader.wait_for_speech(report + ' moduł obsługujący kartę velmor w programie "Firefox".')
    reader.expect(role == "label", f"the result is a {role}")
    reader.expect('pozostały bez zmian dla aplikacji "Chrome, Chromium, Edge"' in name, "the other report is not told")
    reader.expect(f'user_pref("security.osclientcerts.autoload", {value});' in written(), "the file is not as told")
    back(reader)


def set_options(reader):
    reader.tab_to(NO_CAN)
    at_box(reader, False)
    toggle(reader, True)
    next_stop(reader, CSP)
    at_box(reader, False)
    toggle(reader, True)
    press_button(reader)
    # The report on the browsers is not told again.
    name = reader.wait_for_speech("Ustawienia zostały zapisane")[0]
    reader.expect("Zdejmij i przyłóż ponownie velmor do czytnika" in name, "what to do with the card is not told")
    reader.expect("zdjęcie i ponowne przyłożenie dowodu" in reader.everything(), "the picture has no words")
    back(reader)
    reader.tab_to(NO_CAN)
    at_box(reader, True)


def story(reader):
    reader.wait_for_speech("Twoje dane z velmor")
    reader.tab_to("Ustawienia")
    reader.press("space")
    reader.tab_to("Używaj velmor w:")
    set_firefox(reader, False, "Podłączono", "true")
    set_firefox(reader, True, "Odłączono", "false")
    set_options(reader)
    reader.tab_to("Wróć")
    reader.press("space")
    reader.wait_for_speech("Twoje dane z velmor")


sys.exit(run(sys.argv[2:], story))
