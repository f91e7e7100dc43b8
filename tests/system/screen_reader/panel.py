"""Works the trainer's panel by keyboard and ear alone: a card goes in, its PUK is locked, a lesson is prepared. Arguments: the
panel."""

import sys

from reader import run


def story(reader):
    reader.wait_for(lambda: reader.spoken, "anything spoken")
    # From the tabs to the list, and to a card in it by its first item.
    reader.press("Tab")
    name, _, role = reader.wait_for_speech("Anna Maria Wiśniewska. Wszystkie kody działają.")
    reader.expect(role in ("list item", "table cell"), f"a card is a {role}")
    reader.press("space")
    reader.wait_for(lambda: "Anna Maria Wiśniewska. W czytniku." in reader.everything(), "the card in the reader")

    reader.press("ctrl+Tab")
    reader.tab_to("Zablokuj: PUK")
    reader.expect("87654321" not in reader.everything(), "the PUK can be read")
    reader.press("space")
    reader.wait_for(lambda: "PUK: pozostałe próby" in reader.everything(), "the tries of the PUK")

    reader.press("ctrl+Tab", 2)
    reader.wait_for_speech("Zapomniany PIN")
    reader.press("Tab")
    reader.wait_for(lambda: "Anna trzy razy pomyliła PIN" in reader.focused_text(), "the text of the lesson")
    reader.tab_to("Przygotuj tę lekcję")
    reader.expect(reader.spoken[-1][1].startswith("zaczyna od nowa"), "what the button does is not told")
    reader.press("space")
    reader.wait_for(lambda: "W czytniku: Anna Maria Wiśniewska" in reader.everything(), "the card of the lesson")


sys.exit(run(sys.argv[1:], story))
