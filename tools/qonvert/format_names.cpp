#include "tools/qonvert/format_names.h"

#include <algorithm>
#include <cctype>
#include <numeric>
#include <tuple>

#include "texconv/format_table.h"
#include "tools/qonvert/dds_formats.h"
#include "tools/qonvert/finding.h"
#include "tools/qonvert/ktx1_formats.h"

namespace qonvert {

namespace {

std::string Upper(std::string_view text) {
    std::string upper(text);
    for (char& c : upper) {
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    return upper;
}

// Without the blanks that pad it.
std::string FourCcName(std::uint32_t word) {
    std::string name = FourCcText(word);
    name.erase(name.find_last_not_of(' ') + 1);
    return name;
}

// Edits (insert, remove, replace) between two words.
std::size_t EditDistance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t replaced = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, replaced});
        }
    }
    return row[b.size()];
}

// The names that a user may have meant: those that begin so, then by edits to the name or an alias.
std::string Nearest(const std::string& wanted) {
    struct Candidate {
        bool other;  // begins with something else
        std::size_t distance;
        std::string_view name;
    };
    std::vector<Candidate> candidates;
    for (const auto& row : QXTextureConverter::kFormats) {
        std::size_t distance = EditDistance(wanted, FormatName(row.code));
        for (const std::string& alias : FormatAliases(row.code)) {
            distance = std::min(distance, EditDistance(wanted, Upper(alias)));
        }
        candidates.push_back({!FormatName(row.code).starts_with(wanted), distance, FormatName(row.code)});
    }
    std::stable_sort(candidates.begin(), candidates.end(), [](const Candidate& a, const Candidate& b) {
        return std::tie(a.other, a.distance) < std::tie(b.other, b.distance);
    });
    std::string names;
    for (std::size_t i = 0; i < 3; ++i) {
        names += (i == 0 ? "" : ", ") + std::string(candidates[i].name);
    }
    return names;
}

std::string WithoutPrefix(const std::string& name) {
    for (const std::string_view prefix : {"FMT_", "DXGI_FORMAT_", "GL_"}) {
        if (name.starts_with(prefix)) {
            return name.substr(prefix.size());
        }
    }
    return name;
}

}  // namespace

std::string_view FormatName(std::uint32_t format) {
    constexpr std::size_t kPrefix = sizeof "FMT_" - 1;
    return QXTextureConverter::FindFormat(format)->name + kPrefix;
}

std::vector<std::string> FormatAliases(std::uint32_t format) {
    std::vector<std::string> aliases;
    for (const KtxFormat& row : kKtxFormats) {
        if (row.code == format) {
            aliases.emplace_back(row.name);
            aliases.push_back(Hex(row.internalFormat));
        }
    }
    for (const DdsFourCc& row : kDdsFourCcs) {
        if (row.code == format) {
            aliases.push_back(FourCcName(row.fourCc));
        }
    }
    for (const DdsDxgi& row : kDdsDxgis) {
        if (row.code == format) {
            aliases.push_back(std::string("DXGI_FORMAT_") + row.name);
        }
    }
    return aliases;
}

std::uint32_t ParseFormat(std::string_view name) {
    std::string whole = Upper(name.substr(0, 64));
    whole.erase(whole.find_last_not_of(' ') + 1);  // FourCCs are padded
    const std::string wanted = WithoutPrefix(whole);
    for (const auto& row : QXTextureConverter::kFormats) {
        if (wanted == FormatName(row.code)) {
            return row.code;
        }
    }
    for (const auto& row : QXTextureConverter::kFormats) {
        for (const std::string& alias : FormatAliases(row.code)) {
            const std::string upper = Upper(alias);
            if (upper == whole || WithoutPrefix(upper) == wanted) {
                return row.code;
            }
        }
    }
    throw ToolError(ExitCode::kUsage, "no format is called \"" + std::string(name.substr(0, 64)) +
                                          "\"; the nearest are " + Nearest(wanted));
}

}  // namespace qonvert
