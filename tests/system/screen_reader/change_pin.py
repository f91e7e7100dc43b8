"""Changes a PIN from the home page to the result by keyboard and ear alone. Arguments: velmor_send, the program with its options."""

import subprocess
import sys

from reader import run

SEND = sys.argv[1]
ACTUAL, WRONG, FRESH = "1234", "9753", "4826"
SECRETS = (ACTUAL, WRONG, FRESH)


def fill(reader, actual, fresh, repeat):
    name, description, role = reader.wait_for_speech("Wprowadź aktualny cztero cyfrowy PIN.")
    reader.expect(
        name == "Zmiana PIN-uCertyfikat do identyfikacji i uwierzytelniania Wprowadź aktualny cztero cyfrowy PIN.",
        f"the field is called {name!r}",
    )
    reader.expect(role == "password text", f"the field is a {role}")
    reader.expect(description.startswith("Pozostało prób: "), f"described as {description!r}")
    reader.type(actual)
    reader.wait_for(lambda: reader.focused_length() == len(actual), "the digits")
    reader.expect(actual not in reader.focused_text(), "the field reads its digits out")
    reader.press("Tab")
    reader.wait_for(
        lambda: reader.spoken[-1][1] == "Wprowadź nowy czterocyfrowy PIN.", "the field of the new PIN"
    )
    # Letters do not get in.
    reader.type("a" + fresh)
    reader.press("Tab")
    reader.wait_for(lambda: reader.spoken[-1][1] == "Powtórz nowy PIN.", "the field of the repetition")
    reader.type(repeat)
    reader.press("Tab")
    reader.wait_for_speech("Zmień PIN")
    reader.expect_silence_about(SECRETS)
    reader.press("Return")


def open_page(reader):
    reader.tab_to("Zmień PIN: certyfikat do identyfikacji i uwierzytelniania")
    reader.press("Return")
    return reader.wait_for_speech("Wprowadź aktualny")


def story(reader):
    reader.wait_for_speech("Twoje dane z velmor")
    reader.expect("Pozostało prób: 3" in open_page(reader)[1], "three tries are not told")

    # A repetition that differs is told where it was made.
    fill(reader, ACTUAL, FRESH, WRONG)
    reader.wait_for_speech("Powtórzony nowy PIN różni się")
    reader.press("Tab", 2)
    reader.wait_for_speech("Anuluj")
    reader.press("Return")
    reader.wait_for_speech("Twoje dane z velmor")

    # So is a PIN that the card refuses, with what is left.
    open_page(reader)
    fill(reader, WRONG, FRESH, FRESH)
    reader.wait_for_speech("Niepoprawna zmiana PIN-u.\nNiepoprawny aktualny PIN")
    reader.tab_to("Wróć")
    reader.press("Return")
    reader.wait_for_speech("Twoje dane z velmor")
    reader.expect("Pozostało prób: 2" in open_page(reader)[1], "two tries are not told")

    # Cancelled with all fields filled.
    fields = ((ACTUAL, "Tab"), (FRESH, "Tab"), (FRESH, "Tab"))
    for digits, key in fields:
        reader.type(digits)
        reader.press(key)
    reader.tab_to("Anuluj")
    reader.press("Return")
    reader.wait_for_speech("Twoje dane z velmor")
    reader.expect_silence_about(SECRETS)
    open_page(reader)

    fill(reader, ACTUAL, FRESH, FRESH)
    _, _, role = reader.wait_for_speech("PIN został zmieniony")
    reader.expect(role == "label", f"the result is a {role}")
    reader.expect(
        any(entry[0] == "Zmiana PIN-u \n Proszę czekać" for entry in reader.spoken), "the wait is not told"
    )
    reader.expect_silence_about(SECRETS)
    reader.tab_to("Wróć")
    reader.press("space")
    reader.wait_for_speech("Twoje dane z velmor")

    # The card goes with a PIN half typed: what was typed goes without a word.
    open_page(reader)
    reader.type(FRESH)
    subprocess.run([SEND, "velmor_manager", "readers", "NO_CARD"], check=True)
    reader.wait_for_speech("Brak połączenia")
    reader.expect_silence_about(SECRETS)


sys.exit(run(sys.argv[2:], story))
