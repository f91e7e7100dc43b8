"""Unblocks a PIN with the PUK by keyboard and ear alone. Arguments: the program with its options."""

import sys

from reader import run

PUK, WRONG, FRESH = "87654321", "97531975", "482615"
SECRETS = (PUK, WRONG, FRESH)


def fill(reader, puk):
    reader.tab_to("Wprowadź ośmiocyfrowy PUK")
    _, description, role = reader.spoken[-1]
    reader.expect(role == "password text", f"the field is a {role}")
    reader.type(puk)
    reader.wait_for(lambda: reader.focused_length() == len(puk), "the digits")
    reader.press("Tab")
    reader.wait_for(
        lambda: reader.spoken[-1][1] == "Wprowadź nowy sześciocyfrowy PIN.", "the field of the new PIN"
    )
    reader.type(FRESH)
    reader.press("Tab")
    reader.wait_for(lambda: reader.spoken[-1][1] == "Powtórz nowy PIN.", "the field of the repetition")
    reader.type(FRESH)
    reader.press("Tab")
    reader.wait_for_speech("Zmień PIN")
    reader.expect_silence_about(SECRETS)
    reader.press("Return")
    return description


def open_page(reader):
    reader.wait_for_speech("Twoje dane z velmor")
    reader.tab_to("Odblokuj PIN: certyfikat do podpisu osobistego")
    reader.press("space")
    name, _, _ = reader.wait_for_speech("Odblokowanie PIN-u Certyfikat do podpisu osobistego, PIN jest zablokowany, ")
    return name


def story(reader):
    reader.expect("Masz 3 próby na prawidłowe wpisanie" in open_page(reader), "three tries are not told")
    reader.expect(fill(reader, WRONG) == "Pozostało prób: 3", "the field does not tell the tries")
    reader.wait_for_speech("Niepoprawne odblokowanie PIN-u.\nNiepoprawny PUK.")
    reader.tab_to("Wróć")
    reader.press("Return")

    reader.expect("Masz 2 próby na prawidłowe wpisanie" in open_page(reader), "two tries are not told")
    reader.expect(fill(reader, PUK) == "Pozostało prób: 2", "the field does not tell the tries")
    reader.wait_for_speech("PIN został odblokowany")
    reader.expect_silence_about(SECRETS)


sys.exit(run(sys.argv[1:], story))
