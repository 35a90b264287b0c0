// The program qonvert, with samples for it.
#pragma once

#include "tests/qonvert/samples.h"
#include "tests/tool_test.h"

namespace qonvert {

class QonvertTest : public ToolTest {
  protected:
    QonvertTest() : ToolTest(QONVERT_PROGRAM) {}

    // A smooth picture with alpha, as PNG.
    void WritePicture(const char* name, std::uint32_t width, std::uint32_t height) const {
        TextureFile texture{FMT_RGBA8888, width, height, Origin::kTopLeft, "", {{}}};
        for (std::uint32_t i = 0; i < width * height; ++i) {
            const std::uint32_t x = i % width, y = i / width;
            for (const std::uint32_t value :
                 {x * 255 / width, y * 255 / height, (x + y) * 127 / (width + height), 255 - x % 64}) {
                texture.levels.front().push_back(static_cast<std::uint8_t>(value));
            }
        }
        Write(name, WriteContainer(*FindContainer("png"), texture, {}));
    }
};

}  // namespace qonvert
