#include "simworld/card_file.h"

#include <algorithm>
#include <filesystem>

#include "simworld/platform.h"
#include "simworld/world_state.h"

namespace sim {

namespace fs = std::filesystem;

namespace {

const struct {
    unsigned long value;
    const char *word;
} classWords[] = { { 0, "data" }, { 1, "certificate" }, { 2, "public-key" }, { 3, "private-key" } };

unsigned long classOf(const ConfigSection &section)
{
    for (const auto &row : classWords) {
        if (section.text("class") == row.word)
            return row.value;
    }
    return static_cast<unsigned long>(section.number("class", 0));
}

std::string classWord(unsigned long objectClass)
{
    for (const auto &row : classWords) {
        if (row.value == objectClass)
            return row.word;
    }
    return hexNumber(objectClass);
}

bool isDirectory(const std::string &path)
{
    std::error_code ignored;
    return fs::is_directory(fs::u8path(path), ignored);
}

bool isCardFolder(const std::string &path)
{
    std::error_code ignored;
    return fs::is_regular_file(fs::u8path(path + "/card.conf"), ignored);
}

std::string joined(const std::string &folder, const std::string &name)
{
    std::string path = folder;
    return path.append("/").append(name);
}

std::vector<std::string> subfolders(const std::string &folder)
{
    std::vector<std::string> out;
    std::error_code ignored;
    for (const auto &entry : fs::directory_iterator(fs::u8path(folder), ignored))
        out.push_back(entry.path().filename().u8string());
    std::sort(out.begin(), out.end());
    return out;
}

Object readObject(const ConfigSection &section)
{
    Object object;
    object.objectClass = classOf(section);
    object.label = section.text("label");
    object.id = section.bytes("id");
    object.file = section.text("file");
    object.isPrivate = section.flag("private", false);
    return object;
}

void writeObject(ConfigSection &section, const std::string &container, const Object &object)
{
    section.setText("container", container);
    section.setText("class", classWord(object.objectClass));
    section.setText("label", object.label);
    if (!object.id.empty())
        section.setBytes("id", object.id);
    if (!object.file.empty())
        section.setText("file", object.file);
    if (object.isPrivate)
        section.setFlag("private", true);
}

} // namespace

std::optional<Card> readCard(const std::string &folder, bool withValues, std::string &error)
{
    std::string text;
    std::vector<ConfigSection> sections;
    const std::string manifest = folder + "/card.conf";
    if (!platform::readFile(manifest, text)) {
        error = "cannot read " + manifest;
        return {};
    }
    if (!parseConfig(text, sections, error)) {
        error = manifest + ": " + error;
        return {};
    }
    Card card;
    card.name = fs::u8path(folder).filename().u8string();
    card.holder = sections.front().text("holder");
    card.chip = sections.front().text("chip");
    card.supported = sections.front().flag("supported", true);
    card.state = readCardState(sections.front());
    for (const ConfigSection &section : sections) {
        if (section.kind != "object")
            continue;
        Object object = readObject(section);
        if (withValues && !object.file.empty() && !platform::readFile(folder + "/" + object.file, object.value)) {
            error = "cannot read " + folder + "/" + object.file;
            return {};
        }
        card.objects[section.text("container")].push_back(object);
    }
    return card;
}

bool writeCard(const std::string &folder, const Card &card, std::string &error)
{
    std::error_code failure;
    fs::create_directories(fs::u8path(folder), failure);
    std::vector<ConfigSection> sections(1);
    ConfigSection &top = sections.front();
    top.setText("holder", card.holder);
    top.setText("chip", card.chip);
    top.setFlag("supported", card.supported);
    writeCardState(top, card.state);
    int number = 0;
    for (const char *container : containers) {
        const auto found = card.objects.find(container);
        if (found == card.objects.end())
            continue;
        for (Object object : found->second) {
            ++number;
            if (object.file.empty() && !object.value.empty())
                object.file = "object-" + std::to_string(number) + ".bin";
            if (!object.file.empty() && !platform::replaceFile(folder + "/" + object.file, object.value)) {
                error = "cannot write " + folder + "/" + object.file;
                return false;
            }
            writeObject(sections.emplace_back("object"), container, object);
        }
    }
    const std::string manifest = folder + "/card.conf";
    if (platform::replaceFile(manifest, writeConfig(sections, "A specimen card; nobody of this name exists.")))
        return true;
    error = "cannot write " + manifest;
    return false;
}

std::vector<std::string> cardFolders(const std::string &worldFolder, const std::string &configured)
{
    // Beside the library in the root (Linux) or in root/64 (Windows), beside velmor-sim in root/devkit, and for test
    // programs of the build tree.
    static const char *const besides[] = { "/devkit/cards", "/../devkit/cards", "/cards", "/../root/devkit/cards" };
    std::vector<std::string> wanted { worldFolder + "/cards", configured, platform::variable("VELMOR_SIM_CARDS") };
    const std::string module = platform::moduleFolder();
    for (const char *beside : besides)
        wanted.push_back(fs::u8path(module + beside).lexically_normal().generic_u8string());
    wanted.erase(std::remove_if(wanted.begin(), wanted.end(),
                                [](const std::string &path) { return path.empty() || !isDirectory(path); }),
                 wanted.end());
    return wanted;
}

std::string findCardFolder(const std::vector<std::string> &folders, const std::string &name)
{
    if (name.find('/') != std::string::npos)
        return isCardFolder(name) ? name : std::string();
    for (const std::string &folder : folders) {
        if (!name.empty() && isCardFolder(joined(folder, name)))
            return joined(folder, name);
    }
    return {};
}

std::vector<Card> listCards(const std::vector<std::string> &folders)
{
    std::vector<Card> out;
    for (const std::string &folder : folders) {
        for (const std::string &name : subfolders(folder)) {
            std::string ignored;
            const std::string path = joined(folder, name);
            const auto known = [&](const Card &card) { return card.name == name; };
            if (std::any_of(out.begin(), out.end(), known) || !isCardFolder(path))
                continue;
            if (auto card = readCard(path, false, ignored))
                out.push_back(*card);
        }
    }
    return out;
}

} // namespace sim
