// Installed fonts for tests; without them these are skipped.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>

#include "core/font_file.h"
#include "tests/core/fake_backend.h"

namespace zorvan::test {

inline constexpr char const* kDejaVu = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";
inline constexpr char const* kLiberation =
    "/usr/share/fonts/truetype/liberation2/LiberationSerif-Regular.ttf";

class FontFileTest : public testing::Test {
  protected:
    void SetUp() override {
        for (char const* path : {kDejaVu, kLiberation}) {
            if (!std::filesystem::exists(path)) {
                GTEST_SKIP() << path << " is missing: install fonts-dejavu-core and fonts-liberation2";
            }
        }
        std::string error;
        if (!FontFile::Open(kDejaVu, 20, error) && error.find("without font support") != error.npos) {
            GTEST_SKIP() << error;
        }
    }

    FakeBackend backend_;
    FakeDevice device_;
};

}  // namespace zorvan::test
