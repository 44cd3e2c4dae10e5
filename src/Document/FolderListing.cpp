#include "Document/FolderListing.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <chrono>
#include <cmath>
#include <system_error>

namespace kiv {
namespace {

constexpr std::array<const char *, 12> months{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                              "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

std::chrono::year_month_day localDay(std::time_t time) {
    std::tm parts{};
    ::localtime_r(&time, &parts);
    return {std::chrono::year(parts.tm_year + 1900), std::chrono::month(unsigned(parts.tm_mon) + 1),
            std::chrono::day(unsigned(parts.tm_mday))};
}

// Where an entry cannot even be asked what it is, it is none that could be chosen.
std::optional<FileSystem::Identity> identityOf(Files &files, const std::string &path) {
    try {
        return files.identity(path);
    } catch (const std::system_error &) {
        return std::nullopt;
    }
}

bool beginsWith(std::string_view name, std::string_view begun) {
    return name.size() >= begun.size() &&
           std::equal(begun.begin(), begun.end(), name.begin(),
                      [](unsigned char a, unsigned char b) { return std::tolower(a) == std::tolower(b); });
}

}  // namespace

FolderListing listFolder(Files &files, const std::string &folder, const Progress &progress) {
    FolderListing listing;
    try {
        const auto identity = files.identity(folder);
        if (!identity || identity->kind != FileSystem::Kind::folder) return listing;
        listing.access = files.isWritable(folder) ? FolderListing::Access::writable : FolderListing::Access::readOnly;
        for (std::string &name : files.names(folder)) {
            if (progress.isCancelled()) return listing;
            if (name.empty() || name.front() == '.') continue;
            const auto entry = identityOf(files, folder + '/' + name);
            if (!entry || entry->kind == FileSystem::Kind::other) continue;
            listing.entries.push_back(
                {std::move(name), entry->kind == FileSystem::Kind::folder, entry->size, entry->modifiedNs});
        }
    } catch (const std::system_error &) {
        listing.access = FolderListing::Access::unreadable;
    }
    return listing;
}

std::string sizeText(std::int64_t bytes) {
    if (bytes < 1000) return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
    constexpr std::array units{"kB", "MB", "GB", "TB", "PB", "EB"};
    double value = double(bytes) / 1000;
    std::size_t unit = 0;
    // What would be shown as a thousand is one of the next.
    for (; value >= 999.5; value /= 1000) ++unit;
    const long tenths = std::lround(value * 10);
    const std::string number =
        tenths >= 1000 ? std::to_string(std::lround(value)) : std::to_string(tenths / 10) + '.' + std::to_string(tenths % 10);
    return number + ' ' + units[unit];
}

std::string dateText(std::int64_t modifiedNs, std::time_t now) {
    constexpr std::int64_t second = 1'000'000'000;
    const auto day = localDay(std::time_t(modifiedNs / second)), today = localDay(now);
    const auto ago = (std::chrono::sys_days(today) - std::chrono::sys_days(day)).count();
    if (ago == 0) return "Today";
    if (ago == 1) return "Yesterday";
    const std::string text = std::to_string(unsigned(day.day())) + ' ' + months[unsigned(day.month()) - 1];
    return day.year() == today.year() ? text : text + ' ' + std::to_string(int(day.year()));
}

std::vector<std::string> completions(const std::vector<FolderEntry> &entries, std::string_view begun) {
    std::vector<std::string> found;
    for (const FolderEntry &entry : entries)
        if (entry.isFolder && beginsWith(entry.name, begun)) found.push_back(entry.name);
    std::stable_partition(found.begin(), found.end(), [&](const std::string &name) { return name.starts_with(begun); });
    return found;
}

}  // namespace kiv
