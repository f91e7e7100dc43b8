"""Works the help page by keyboard and ear alone. Arguments: the file to which opened links are written, the folder of
the logs, the program with its options."""

import os
import sys

from reader import run

opened_file, logs = sys.argv[1:3]
REPORT = "Informacje o systemie"


def opened():
    try:
        with open(opened_file, encoding="utf-8") as file:
            return file.read().split()
    except FileNotFoundError:
        return []


def next_stop(reader, name):
    reader.tab_to(name, most=1)


def read_report(reader):
    reader.wait_for(lambda: "Wersja aplikacji: 4.3.5.23" in reader.focused_text(), "the report")
    reader.wait_for(lambda: "Liczba czytników" in reader.focused_text(), "the answer of the Monitor")


def activate_logs(reader):
    reader.expect(not os.path.exists(logs), "logs are kept already")
    reader.press("Tab")  # to the first link inside the report
    reader.press("Return")
    reader.wait_for(lambda: os.path.isdir(logs), "the folder of the logs")
    reader.wait_for(lambda: "(Uruchom ponownie aplikację)" in reader.focused_text(), "the note in the report")


def open_documents(reader):
    documents = (
        ("link instrukcja", "/statics/instrukcja.html"),
        ("link umowa licencyjna", "/Licenses/license.html"),
        ("link historia zmian", "/statics/historia_zmian.html"),
    )
    for name, document in documents:
        next_stop(reader, name)
        reader.press("Return")
        reader.wait_for(lambda: any(link.endswith(document) for link in opened()), document)


def story(reader):
    reader.wait_for_speech("Pomoc techniczna")
    next_stop(reader, "Zgłoś problem")
    reader.press("space")
    reader.wait_for(lambda: "https://pomoc.velmor.example/" in opened(), "the help website")

    next_stop(reader, REPORT)
    read_report(reader)
    activate_logs(reader)

    # The new text has two places to stop at, its beginning and its link.
    reader.tab_to("przycisk odśwież raport", most=3)
    reader.press("space")
    # The pressed button goes off until the answer comes, and the focus goes on to the next step.
    reader.wait_for_speech("przycisk kopiuj raport do schowka")
    reader.wait_for(lambda: "(Uruchom ponownie aplikację)" not in reader.everything(), "a new report")
    reader.press("space")
    open_documents(reader)


sys.exit(run(sys.argv[3:], story))
