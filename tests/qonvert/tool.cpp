#include "tests/qonvert/tool.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "texconv/qonvert.h"
#include "tools/qonvert/files.h"

namespace qonvert {

namespace {

std::string Slurp(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

}  // namespace

ToolTest::ToolTest() {
    std::string name = (std::filesystem::temp_directory_path() / "qonvert_test.XXXXXX").string();
    directory_ = mkdtemp(name.data());
}

ToolTest::~ToolTest() {
    std::filesystem::remove_all(directory_);
}

ToolResult ToolTest::Run(const std::string& arguments) {
    const std::filesystem::path out = directory_.string() + ".out";
    const std::filesystem::path err = directory_.string() + ".err";
    const std::string command = "cd '" + directory_.string() + "' && '" QONVERT_PROGRAM "' " + arguments +
                                " >'" + out.string() + "' 2>'" + err.string() + "'";
    const int status = std::system(command.c_str());
    ToolResult result{WIFEXITED(status) ? WEXITSTATUS(status) : -1, Slurp(out), Slurp(err)};
    std::filesystem::remove(out);
    std::filesystem::remove(err);
    return result;
}

bool ToolTest::Shell(const std::string& command) {
    return std::system(
               ("cd '" + directory_.string() + "' && { " + command + "; } >/dev/null 2>&1").c_str()) == 0;
}

void ToolTest::Write(const std::string& name, ByteSpan bytes) const {
    WriteFile(Path(name), bytes, true);
}

Bytes ToolTest::Read(const std::string& name) const {
    return ReadFile(Path(name));
}

void ToolTest::WritePicture(const std::string& name, std::uint32_t width, std::uint32_t height) const {
    TextureFile texture;
    texture.format = FMT_RGBA8888;
    texture.width = width;
    texture.height = height;
    texture.levels.emplace_back();
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            for (const std::uint32_t value :
                 {x * 255 / width, y * 255 / height, (x + y) * 127 / (width + height), 255 - x % 64}) {
                texture.levels.front().push_back(static_cast<std::uint8_t>(value));
            }
        }
    }
    Write(name, WriteContainer(*FindContainer("png"), texture, {}));
}

std::set<std::string> ToolTest::Names() const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(directory_)) {
        names.insert(std::filesystem::relative(entry.path(), directory_).string());
    }
    return names;
}

}  // namespace qonvert
