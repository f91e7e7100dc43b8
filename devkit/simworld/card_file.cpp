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

unsigned long classOf(const std::string &word)
{
    for (const auto &row : classWords) {
        if (word == row.word)
            return row.value;
    }
    long long number = 0;
    return parseNumber(word, number) ? static_cast<unsigned long>(number) : 0;
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

void cardValues(ConfigValues values, Card &card)
{
    values.text("holder", card.holder);
    values.text("chip", card.chip);
    values.flag("supported", card.supported);
    cardStateValues(values, card.state);
}

void objectValues(ConfigValues values, std::string &container, Object &object)
{
    std::string word = classWord(object.objectClass);
    values.text("container", container);
    values.text("class", word);
    object.objectClass = classOf(word);
    values.text("label", object.label);
    values.bytesIfGiven("id", object.id);
    values.textIfGiven("file", object.file);
    values.flagIfSet("private", object.isPrivate);
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
    card.state = freshCardState();
    cardValues(ConfigValues::of(sections.front()), card);
    for (const ConfigSection &section : sections) {
        if (section.kind != "object")
            continue;
        Object object;
        std::string container;
        objectValues(ConfigValues::of(section), container, object);
        if (withValues && !object.file.empty() && !platform::readFile(folder + "/" + object.file, object.value)) {
            error = "cannot read " + folder + "/" + object.file;
            return {};
        }
        card.objects[container].push_back(object);
    }
    return card;
}

bool writeCard(const std::string &folder, Card card, std::string &error)
{
    std::error_code failure;
    fs::create_directories(fs::u8path(folder), failure);
    std::vector<ConfigSection> sections(1);
    cardValues(ConfigValues::into(sections.front()), card);
    int number = 0;
    for (std::string container : containers) {
        for (Object &object : card.objects[container]) {
            ++number;
            if (object.file.empty() && !object.value.empty())
                object.file = "object-" + std::to_string(number) + ".bin";
            if (!object.file.empty() && !platform::replaceFile(folder + "/" + object.file, object.value)) {
                error = "cannot write " + folder + "/" + object.file;
                return false;
            }
            sections.push_back({ "object", {}, {} });
            objectValues(ConfigValues::into(sections.back()), container, object);
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
