#include "platform/linux/i3/I3Message.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QString>

#include <array>
#include <cstring>
#include <utility>

namespace LinuxPlatform {
namespace {

constexpr std::array<char, 6> magic{'i', '3', '-', 'i', 'p', 'c'};
constexpr qsizetype headerSize = magic.size() + 2 * sizeof(std::uint32_t);

std::uint32_t numberAt(const char* place) {
    std::uint32_t number = 0;
    std::memcpy(&number, place, sizeof number);
    return number;
}

} // namespace

QByteArray i3Message(I3Request type, const QByteArray& payload) {
    const std::array numbers{static_cast<std::uint32_t>(payload.size()), static_cast<std::uint32_t>(type)};
    QByteArray message(magic.data(), magic.size());
    message.append(reinterpret_cast<const char*>(numbers.data()), sizeof numbers);
    message.append(payload);
    return message;
}

QJsonDocument jsonOf(const QByteArray& payload) {
    return QJsonDocument::fromJson(QString::fromUtf8(payload).toUtf8());
}

std::vector<std::string> refusalsIn(const QByteArray& payload) {
    std::vector<std::string> refusals;
    const auto results = jsonOf(payload).array();
    for (const auto& result : results) {
        if (!result[QLatin1String("success")].toBool()) {
            refusals.push_back(result[QLatin1String("error")].toString().simplified().toStdString());
        }
    }
    return refusals;
}

void I3MessageReader::add(const char* bytes, std::size_t count) {
    if (!isBroken_) {
        bytes_.append(bytes, static_cast<qsizetype>(count));
    }
}

std::optional<I3Message> I3MessageReader::next() {
    const auto left = bytes_.size() - used_;
    if (isBroken_ || left < headerSize) {
        return std::nullopt;
    }
    const char* const header = bytes_.constData() + used_;
    const auto length = numberAt(header + magic.size());
    if (std::memcmp(header, magic.data(), magic.size()) != 0 || length > longestPayload) {
        isBroken_ = true;
        bytes_.clear();
        return std::nullopt;
    }
    if (left - headerSize < static_cast<qsizetype>(length)) {
        bytes_.remove(0, std::exchange(used_, 0));
        return std::nullopt;
    }
    I3Message message{numberAt(header + magic.size() + sizeof length),
                      QByteArray(header + headerSize, length)};
    used_ += headerSize + static_cast<qsizetype>(length);
    if (used_ == bytes_.size()) {
        bytes_.clear();
        used_ = 0;
    }
    return message;
}

} // namespace LinuxPlatform
