#include "desktop/registry_file.h"

#include <QByteArray>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLockFile>
#include <QSaveFile>
#include <QStandardPaths>
#include <QStorageInfo>
#include <QString>
#include <QThread>
#include <algorithm>
#include <cstring>
#include <functional>
#include <limits>
#include <optional>
#include <utility>

namespace melvane {

namespace {

constexpr qint64 kLargestFile = 4 << 20;
constexpr int kLockWaitMs = 2000;
constexpr int kLockPauseMs = 1;
// Age at which a lock file that nobody holds is removed even when it does not tell who made it.
constexpr int kStaleLockMs = 1000;

enum class FileState { missing, inaccessible, broken, good };

struct Contents {
    FileState state = FileState::missing;
    QJsonObject keys;
};

Contents readContents(const QString& path) {
    const QFileInfo info(path);
    if (!info.exists()) return {FileState::missing, {}};
    QFile file(path);
    // A directory or a pipe is not even opened.
    if (!info.isFile() || !file.open(QIODevice::ReadOnly)) return {FileState::inaccessible, {}};
    const QByteArray bytes = file.read(kLargestFile + 1);
    if (file.error() != QFileDevice::NoError) return {FileState::inaccessible, {}};
    if (bytes.size() > kLargestFile) return {FileState::broken, {}};

    const QJsonDocument document = QJsonDocument::fromJson(bytes);
    const QJsonObject keys = document.object();
    const bool good = document.isObject() &&
                      std::all_of(keys.begin(), keys.end(), [](const QJsonValue& value) { return value.isObject(); });
    return good ? Contents{FileState::good, keys} : Contents{FileState::broken, {}};
}

char16_t asciiLower(QChar c) {
    const char16_t unit = c.unicode();
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + (u'a' - u'A')) : unit;
}

// The name under which `object` has the entry, or `name` itself when it has none.
QString nameIn(const QJsonObject& object, const QString& name) {
    const auto same = [&](const QString& other) {
        return std::equal(name.begin(), name.end(), other.begin(), other.end(),
                          [](QChar a, QChar b) { return asciiLower(a) == asciiLower(b); });
    };
    for (auto entry = object.begin(); entry != object.end(); ++entry)
        if (same(entry.key())) return entry.key();
    return name;
}

struct Value {
    std::uint32_t type;
    QByteArray data;
};

QJsonValue toJson(const Value& value) {
    if (value.type == REG_SZ && !value.data.contains('\0')) {
        const QString text = QString::fromUtf8(value.data);
        if (text.toUtf8() == value.data) return text;
    }
    return QJsonObject{{QStringLiteral("type"), static_cast<qint64>(value.type)},
                       {QStringLiteral("base64"), QString::fromLatin1(value.data.toBase64())}};
}

std::optional<Value> fromJson(const QJsonValue& json) {
    if (json.isString()) return Value{REG_SZ, json.toString().toUtf8()};
    const qint64 type = json[QStringLiteral("type")].toInteger(-1);
    const QJsonValue base64 = json[QStringLiteral("base64")];
    if (type < 0 || type > std::numeric_limits<std::uint32_t>::max() || !base64.isString()) return std::nullopt;
    auto data = QByteArray::fromBase64Encoding(base64.toString().toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    if (!data) return std::nullopt;
    return Value{static_cast<std::uint32_t>(type), std::move(*data)};
}

void lock(QLockFile& file) {
    file.setStaleLockTime(kStaleLockMs);
    const QDeadlineTimer deadline(kLockWaitMs);
    while (!file.tryLock(0)) {
        if (file.error() != QLockFile::LockFailedError || deadline.hasExpired()) return;
        QThread::msleep(kLockPauseMs);
    }
}

bool moveAside(const QString& path) {
    const QString aside = path + QStringLiteral(".broken");
    QString free = aside;
    for (int n = 2; QFileInfo(free).exists() || QFileInfo(free).isSymLink(); ++n) free = aside + QString::number(n);
    return QFile::rename(path, free);
}

bool fits(const QJsonObject& keys) {
    return QJsonDocument(keys).toJson().size() <= kLargestFile;
}

// commit() alone does not tell when the last bytes find no room.
bool replaceFile(const QString& path, const QJsonObject& keys) {
    const QByteArray bytes = QJsonDocument(keys).toJson();
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.flush() && file.commit();
}

// Why the folder of `path` takes no file.
std::int32_t writeFailure(const QString& path) {
    constexpr qint64 kLittle = 1 << 16;
    const QStorageInfo disk(QFileInfo(path).absolutePath());
    return disk.isValid() && disk.bytesAvailable() < kLittle ? ERROR_DISK_FULL : ERROR_WRITE_FAULT;
}

std::string keyPathOf(RegistryHive hive, const std::string& subKey) {
    switch (hive) {
        case RegistryHive::HKEY_CURRENT_USER:
            return "HKEY_CURRENT_USER\\" + subKey;
    }
    return subKey;
}

}  // namespace

struct RegistryFile::Batch {
    int depth = 0;
    std::optional<QLockFile> lockFile;  // of a batch that changes
    Contents before;
    QJsonObject keys;                      // with what was changed
    std::int32_t failure = ERROR_SUCCESS;  // of a single change
};

RegistryFile::RegistryFile(std::string path) : path_(std::move(path)) {}

RegistryFile::~RegistryFile() = default;

std::string RegistryFile::defaultPath() {
    return QDir(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation))
        .filePath(QStringLiteral("Tessaro/registry.json"))
        .toStdString();
}

void RegistryFile::begin(RegistryAccess access) {
    const QString path = QString::fromStdString(path_);
    const bool first = !batch_;
    if (first) batch_ = std::make_unique<Batch>();
    ++batch_->depth;
    const bool changes = access == RegistryAccess::change && !batch_->lockFile;
    if (changes) {
        batch_->lockFile.emplace(path + QStringLiteral(".lock"));
        if (QDir().mkpath(QFileInfo(path).absolutePath())) lock(*batch_->lockFile);
    }
    if (!first && !changes) return;
    batch_->before = readContents(path);
    batch_->keys = batch_->before.keys;
}

std::int32_t RegistryFile::end() {
    if (--batch_->depth > 0) return ERROR_SUCCESS;
    const std::unique_ptr<Batch> ended = std::move(batch_);
    if (!ended->lockFile) return ERROR_SUCCESS;
    const std::int32_t written = replace(*ended);
    failure_ = written != ERROR_SUCCESS ? written : ended->failure;
    return written;
}

std::int32_t RegistryFile::replace(const Batch& batch) const {
    if (batch.keys == batch.before.keys) return ERROR_SUCCESS;
    const QString path = QString::fromStdString(path_);
    const FileState state = batch.before.state;
    if (state == FileState::inaccessible || (state == FileState::broken && !moveAside(path))) return ERROR_WRITE_FAULT;
    return replaceFile(path, batch.keys) ? ERROR_SUCCESS : writeFailure(path);
}

std::int32_t RegistryFile::change(const std::function<void(QJsonObject&)>& change) {
    begin(RegistryAccess::change);
    std::int32_t failure = ERROR_SUCCESS;
    QJsonObject keys = batch_->keys;
    if (batch_->lockFile->isLocked()) {
        change(keys);
        if (!fits(keys)) failure = ERROR_WRITE_FAULT;
    } else {
        failure = writeFailure(QString::fromStdString(path_));
    }
    if (failure == ERROR_SUCCESS)
        batch_->keys = keys;
    else
        batch_->failure = failure;
    const std::int32_t result = end();
    return failure != ERROR_SUCCESS ? failure : result;
}

std::int32_t RegistryFile::RegOpenKeyA(RegistryHive hive, const std::string& subKey, RegistryKey& key) {
    key = 0;
    const std::string keyPath = keyPathOf(hive, subKey);
    const RegistryBatch batch(*this, RegistryAccess::read);
    const QJsonObject& keys = batch_->keys;
    if (!keys.contains(nameIn(keys, QString::fromStdString(keyPath)))) return ERROR_FILE_NOT_FOUND;
    return open(keyPath, key);
}

std::int32_t RegistryFile::RegCreateKeyA(RegistryHive hive, const std::string& subKey, RegistryKey& key) {
    key = 0;
    const std::string keyPath = keyPathOf(hive, subKey);
    const auto result = change([&](QJsonObject& keys) {
        const QString name = nameIn(keys, QString::fromStdString(keyPath));
        if (!keys.contains(name)) keys.insert(name, QJsonObject());
    });
    return result == ERROR_SUCCESS ? open(keyPath, key) : result;
}

std::int32_t RegistryFile::RegSetValueExA(RegistryKey key, const std::string& name, std::uint32_t /*reserved*/,
                                          std::uint32_t type, const void* data, std::uint32_t size) {
    const auto openKey = openKeys_.find(key);
    if (openKey == openKeys_.end()) return ERROR_FILE_NOT_FOUND;
    const Value value{type, QByteArray(static_cast<const char*>(data), static_cast<qsizetype>(size))};
    return change([&](QJsonObject& keys) {
        const QString keyName = nameIn(keys, QString::fromStdString(openKey->second));
        QJsonObject values = keys[keyName].toObject();
        values[nameIn(values, QString::fromStdString(name))] = toJson(value);
        keys[keyName] = values;
    });
}

std::int32_t RegistryFile::RegQueryValueExA(RegistryKey key, const std::string& name, std::uint32_t& type, void* data,
                                            std::uint32_t& size) {
    const auto openKey = openKeys_.find(key);
    if (openKey == openKeys_.end()) return ERROR_FILE_NOT_FOUND;
    const RegistryBatch batch(*this, RegistryAccess::read);
    const QJsonObject& keys = batch_->keys;
    const QJsonObject values = keys[nameIn(keys, QString::fromStdString(openKey->second))].toObject();
    const auto value = fromJson(values[nameIn(values, QString::fromStdString(name))]);
    if (!value) return ERROR_FILE_NOT_FOUND;

    const auto room = size;
    type = value->type;
    size = static_cast<std::uint32_t>(value->data.size());
    if (data == nullptr) return ERROR_SUCCESS;
    if (size > room) return ERROR_MORE_DATA;
    if (size > 0) std::memcpy(data, value->data.constData(), size);
    return ERROR_SUCCESS;
}

std::int32_t RegistryFile::RegCloseKey(RegistryKey key) {
    return openKeys_.erase(key) == 1 ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
}

std::int32_t RegistryFile::open(const std::string& keyPath, RegistryKey& key) {
    key = ++lastKey_;
    openKeys_[key] = keyPath;
    return ERROR_SUCCESS;
}

}  // namespace melvane
