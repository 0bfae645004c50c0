#include "job/job_text.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <cmath>
#include <filesystem>
#include <limits>
#include <span>
#include <type_traits>

#include "base/paths.h"
#include "state/numbers.h"

namespace melvane {

namespace {

namespace fs = std::filesystem;

constexpr const char* kVersionField = "melvane job";
constexpr int kVersion = 1;

struct Range {
    double lowest;
    double highest;
};
constexpr Range kPercent{0, 100};
constexpr Range kChannels{1, kMidiChannels};
constexpr Range kDataByte{0, 127};
constexpr Range kInstruments{0, 128};  // the last is the drums
constexpr Range kKeys{-5, 5};
constexpr Range kSyncs{-0.6F, 0.6F};
constexpr Range kPresets{0, 13};
constexpr Range kBalances[]{{-100, 100}, {-100, 103}};
constexpr Range kPlaces{-0x1p40, 0x1p40};  // a song of months
constexpr Range kDrifts{-1e5, 1e5};
constexpr const char* kTagFieldNames[kTagFields] = {"title", "artist", "album", "year", "genre"};
constexpr Range kLoudness{kLeastLoudness, kMostLoudness};
constexpr Range kTrims{-24, 24};
constexpr Range kPorts{std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()};

QString name(const char* field) {
    return QString::fromLatin1(field);
}

QString toQt(const std::string& utf8) {
    return QString::fromStdString(utf8);
}

// Of a float too: its own shortest form, not that of the double next to it.
QJsonValue number(float value) {
    return leadingNumber(numberText(value));
}

template <typename Values>
QJsonArray numbers(const Values& values) {
    QJsonArray array;
    for (const auto value : values) array.append(value);
    return array;
}

QJsonObject fileObject(const std::string& file, const std::string& folder) {
    if (file.empty()) return {};
    QJsonObject object{{name("path"), toQt(file)}};
    const fs::path relative = folder.empty() ? fs::path() : toPath(file).lexically_relative(toPath(folder));
    if (!relative.empty()) object[name("relative")] = toQt(toText(relative));
    return object;
}

QJsonObject tagObject(const TagChoice& tags, const std::string& folder) {
    QJsonObject object{{name("wanted"), tags.wanted}};
    for (std::size_t i = 0; i < kTagFields; ++i)
        if (tags.texts[i]) object[name(kTagFieldNames[i])] = toQt(*tags.texts[i]);
    if (tags.cover) object[name("cover")] = fileObject(*tags.cover, folder);  // none of it: no cover
    return object;
}

QJsonArray channelArray(const ChannelTable<ChannelChoice>& channels) {
    QJsonArray array;
    for (std::int16_t c = 0; c < kMidiChannels; ++c) {
        const ChannelChoice& choice = channels[c];
        if (choice == ChannelChoice{}) continue;
        QJsonObject object{{name("channel"), c + 1}, {name("on"), choice.on}};
        if (choice.instrument) object[name("instrument")] = *choice.instrument;
        if (choice.volume) object[name("volume")] = *choice.volume;
        if (choice.balance) object[name("balance")] = *choice.balance;
        array.append(object);
    }
    return array;
}

QJsonArray soloArray(std::uint16_t soloed) {
    QJsonArray array;
    for (int c = 0; c < kMidiChannels; ++c)
        if ((soloed >> c & 1) != 0) array.append(c + 1);
    return array;
}

// The fields of an object; what is wrong with one throws.
class Fields {
public:
    explicit Fields(const QJsonObject& object, const std::string& within = {}) : object_(object), within_(within) {}

    template <typename T>
    void take(const char* field, Range range, T& value) const {
        if (has(field)) value = checked<T>(object_[name(field)], range, field);
    }
    template <typename T>
    void take(const char* field, Range range, std::optional<T>& value) const {
        if (has(field)) value = checked<T>(object_[name(field)], range, field);
    }
    void take(const char* field, bool& value) const {
        if (!has(field)) return;
        require(object_[name(field)].isBool(), field);
        value = object_[name(field)].toBool();
    }
    void take(const char* field, std::string& value) const {
        if (!has(field)) return;
        require(object_[name(field)].isString(), field);
        value = object_[name(field)].toString().toStdString();
        require(value.find('\0') == std::string::npos, field);
    }
    void take(const char* field, std::optional<std::string>& value) const {
        if (has(field)) take(field, value.emplace());
    }
    // `ranges`: of each value, or one of all.
    template <typename T>
    void takeList(const char* field, std::span<const Range> ranges, std::span<T> values) const {
        if (!has(field)) return;
        const QJsonArray array = list(field);
        require(std::cmp_equal(array.size(), values.size()), field);
        for (std::size_t i = 0; i < values.size(); ++i)
            values[i] = checked<T>(array[static_cast<qsizetype>(i)], ranges[std::min(i, ranges.size() - 1)], field);
    }
    // Numbers of channels, from 1, as bits.
    void takeChannels(const char* field, std::uint16_t& bits) const {
        for (const QJsonValue& value : has(field) ? list(field) : QJsonArray())
            bits = static_cast<std::uint16_t>(bits | 1 << (checked<int>(value, kChannels, field) - 1));
    }
    // Empty where there is none.
    Fields object(const char* field) const {
        require(!has(field) || object_[name(field)].isObject(), field);
        return Fields(object_[name(field)].toObject(), field);
    }
    std::vector<Fields> objects(const char* field) const {
        std::vector<Fields> all;
        for (const QJsonValue& value : has(field) ? list(field) : QJsonArray()) {
            require(value.isObject(), field);
            all.emplace_back(value.toObject(), field);
        }
        return all;
    }
    void require(bool condition, const char* field) const {
        if (!condition) throw JobError(JobFault::value, within_.empty() ? field : within_ + ": " + field);
    }

    bool has(const char* field) const { return object_.contains(name(field)); }

private:
    QJsonArray list(const char* field) const {
        require(object_[name(field)].isArray(), field);
        return object_[name(field)].toArray();
    }
    template <typename T>
    T checked(const QJsonValue& value, Range range, const char* field) const {
        require(value.isDouble(), field);
        const double number = value.toDouble();
        require(number >= range.lowest && number <= range.highest, field);
        require(std::is_floating_point_v<T> || number == std::trunc(number), field);
        return static_cast<T>(number);
    }

    QJsonObject object_;
    std::string within_;
};

enum class Leads { toFile, toFolder };  // of a mix that is to be made only the folder is there

bool leads(const fs::path& path, Leads where) {
    std::error_code error;
    return where == Leads::toFile ? fs::exists(path, error) : fs::is_directory(path.parent_path(), error);
}

std::string readFile(const Fields& fields, const std::string& folder, Leads where) {
    std::string path;
    std::string relative;
    fields.take("path", path);
    fields.take("relative", relative);
    if (folder.empty()) return path;
    const auto inFolder = [&](const std::string& file) { return (toPath(folder) / toPath(file)).lexically_normal(); };
    if (!relative.empty() && (path.empty() || leads(inFolder(relative), where))) return toText(inFolder(relative));
    return path.empty() ? path : toText(inFolder(path));  // an absolute one stays as it is
}

void readEffects(const Fields& fields, Job& job) {
    const std::vector<Fields> effects = fields.objects("effects");
    fields.require(effects.size() <= job.effects.size(), "effects");
    for (std::size_t i = 0; i < effects.size(); ++i) {
        effects[i].take("on", job.effects[i].on);
        effects[i].take("level", kPercent, job.effects[i].level);
    }
}

void readChannels(const Fields& fields, Job& job) {
    for (const Fields& channel : fields.objects("channels")) {
        std::int16_t number = 0;
        channel.take("channel", kChannels, number);
        channel.require(number > 0, "channel");
        ChannelChoice& choice = job.channels[static_cast<std::int16_t>(number - 1)];
        channel.take("on", choice.on);
        channel.take("instrument", kInstruments, choice.instrument);
        channel.take("volume", kDataByte, choice.volume);
        channel.take("balance", kDataByte, choice.balance);
        channel.require(choice.on || choice.volume, "volume");
    }
}

void readTags(const Fields& fields, const std::string& folder, TagChoice& tags) {
    fields.take("wanted", tags.wanted);
    for (std::size_t i = 0; i < kTagFields; ++i) fields.take(kTagFieldNames[i], tags.texts[i]);
    if (fields.has("cover")) tags.cover = readFile(fields.object("cover"), folder, Leads::toFile);
}

Job readJob(const Fields& fields, const std::string& folder) {
    Job job;
    const Fields voice = fields.object("voice");
    job.files = {readFile(fields.object("song"), folder, Leads::toFile), readFile(voice, folder, Leads::toFile),
                 readFile(fields.object("mix"), folder, Leads::toFolder)};
    voice.take("earlier", kPlaces, job.place.earlier);
    voice.take("drift", kDrifts, job.place.driftPpm);
    voice.take("trim", kTrims, job.trim);
    fields.take("key", kKeys, job.key);
    fields.take("synchronisation", kSyncs, job.sync);
    fields.take("loudness", kLoudness, job.loudness);
    fields.takeList<std::int16_t>("volume", {&kPercent, 1}, job.volume);
    fields.takeList<std::int16_t>("tone", {&kPercent, 1}, job.tone);
    fields.takeList<std::int32_t>("balance", kBalances, job.balance);
    fields.take("preset", kPresets, job.preset);
    readEffects(fields, job);
    readChannels(fields, job);
    fields.takeChannels("solo", job.soloed);
    fields.object("midi port").take("number", kPorts, job.midiPort);
    fields.object("midi port").take("name", job.midiPortName);
    readTags(fields.object("tags"), folder, job.tags);
    job.soundFont = readFile(fields.object("sound font"), folder, Leads::toFile);
    return job;
}

}  // namespace

std::string jobText(const Job& job, const std::string& folder, JobLayout layout) {
    QJsonObject voice = fileObject(job.files.vocal, folder);
    voice[name("earlier")] = static_cast<qint64>(job.place.earlier);
    voice[name("drift")] = job.place.driftPpm;
    voice[name("trim")] = number(job.trim);
    QJsonArray effects;
    for (const JobEffect& effect : job.effects)
        effects.append(QJsonObject{{name("on"), effect.on}, {name("level"), effect.level}});
    QJsonObject object{
        {name(kVersionField), kVersion},
        {name("song"), fileObject(job.files.background, folder)},
        {name("voice"), voice},
        {name("mix"), fileObject(job.files.destination, folder)},
        {name("key"), job.key},
        {name("synchronisation"), number(job.sync)},
        {name("volume"), numbers(job.volume)},
        {name("tone"), numbers(job.tone)},
        {name("balance"), numbers(job.balance)},
        {name("effects"), effects},
        {name("preset"), job.preset},
        {name("channels"), channelArray(job.channels)},
        {name("solo"), soloArray(job.soloed)},
        {name("midi port"), QJsonObject{{name("number"), job.midiPort}, {name("name"), toQt(job.midiPortName)}}},
        {name("sound font"), fileObject(job.soundFont, folder)},
        {name("tags"), tagObject(job.tags, folder)},
    };
    if (job.loudness) object[name("loudness")] = number(*job.loudness);
    const auto format = layout == JobLayout::line ? QJsonDocument::Compact : QJsonDocument::Indented;
    return QJsonDocument(object).toJson(format).toStdString();
}

Job readJobText(std::string_view text, const std::string& folder) {
    const auto document =
        QJsonDocument::fromJson(QByteArray::fromRawData(text.data(), static_cast<qsizetype>(text.size())));
    const QJsonValue version = document.object()[name(kVersionField)];
    if (!version.isDouble()) throw JobError(JobFault::noJob);
    if (version.toDouble() != kVersion) throw JobError(JobFault::newer);
    return readJob(Fields(document.object()), folder);
}

}  // namespace melvane
