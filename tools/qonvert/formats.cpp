// qonvert formats: the pixel formats, their other names, and which containers carry them.
#include <CLI/CLI.hpp>
#include <iomanip>
#include <iostream>
#include <nlohmann/json.hpp>

#include "texconv/format_table.h"
#include "tools/qonvert/container.h"
#include "tools/qonvert/format_names.h"
#include "tools/qonvert/verbs.h"

namespace qonvert {

namespace {

using QXTextureConverter::FormatClass;
using QXTextureConverter::FormatInfo;
using QXTextureConverter::kFormats;

const char* ClassName(FormatClass formatClass) {
    switch (formatClass) {
        case FormatClass::kPlain:
            return "plain";
        case FormatClass::kPalette:
            return "palette";
        case FormatClass::kCompressed:
            return "compressed";
        case FormatClass::kFloat:
            break;
    }
    return "float";
}

nlohmann::ordered_json ToJson(const FormatInfo& row) {
    nlohmann::ordered_json json = nlohmann::ordered_json::object();
    json["code"] = row.code;
    json["name"] = FormatName(row.code);
    json["class"] = ClassName(row.formatClass);
    json["bitsPerPixel"] = row.bitsPerPixel;
    json["alpha"] = row.alpha;
    json["paletteBits"] = row.paletteBits;
    json["aliases"] = FormatAliases(row.code);
    json["containers"] = nlohmann::ordered_json::array();
    for (const Container& container : Containers()) {
        if (container.carries(row.code, {})) {
            json["containers"].push_back(container.name);
        }
    }
    return json;
}

std::string Joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : ", ") + word;
    }
    return text;
}

ExitCode RunFormats(const Session& session) {
    if (session.json) {
        nlohmann::ordered_json json = nlohmann::ordered_json::object();
        json["formats"] = nlohmann::ordered_json::array();
        for (const FormatInfo& row : kFormats) {
            json["formats"].push_back(ToJson(row));
        }
        session.Print(json);
        return ExitCode::kOk;
    }
    std::ostream& out = session.text();
    out << std::left << std::setw(5) << "code" << std::setw(24) << "name" << std::setw(12) << "class"
        << std::setw(6) << "bits" << std::setw(7) << "alpha" << std::setw(21) << "containers"
        << "aliases\n";
    for (const FormatInfo& row : kFormats) {
        out << std::setw(5) << row.code << std::setw(24) << FormatName(row.code) << std::setw(12)
            << ClassName(row.formatClass) << std::setw(6) << row.bitsPerPixel << std::setw(7)
            << (row.alpha ? "yes" : "no") << std::setw(21) << ContainersThatCarry(row.code, {})
            << Joined(FormatAliases(row.code)) << '\n';
    }
    return ExitCode::kOk;
}

}  // namespace

void AddFormatsVerb(CLI::App& program, Session& session) {
    CLI::App* verb = AddVerb(program, session, "formats", "List the pixel formats and what carries them",
                             [&session] { return RunFormats(session); });
    verb->footer("Bits are per pixel, or per index of a palette format.\nExample:\n  qonvert formats --json");
}

}  // namespace qonvert
