#include "bench/sprite_scene.h"

#include <GLES2/gl2.h>

#include <algorithm>
#include <chrono>
#include <ctime>

#include "shaders/shader.h"
#include "tests/empty_reader.h"

namespace zorvan {
namespace {

constexpr int kSide = 16;

RefT<TextureGL> MakeTexture() {
    RefT<TextureGL> texture(new TextureGL);
    for (PropertyT<int32_t>* size :
         {&texture->width, &texture->height, &texture->usedWidth, &texture->usedHeight}) {
        size->Set(kSide);
    }
    constexpr uint32_t kBytes = kSide * kSide * 4;
    texture->SizePixelStore(kBytes);
    std::fill_n(texture->pixels.data, kBytes, uint8_t{200});
    texture->levels.Append({kSide, kSide, 0, kBytes});
    return texture;
}

double CpuNanoseconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

}  // namespace

SpriteScene::SpriteScene()
    : device_(std::make_unique<GraphicsDeviceGL>()), root_(new TransformNode), texture_(MakeTexture()) {
    device_->Initialize(nullptr, DeviceFormat::Rgba8888, {kWidth, kHeight});
    device_->PushCamera2D(RealFixed::FromInt(kWidth + 1), RealFixed::FromInt(kHeight + 1));
    EmptyReader reader;
    for (int i = 0; i < kSprites; ++i) {
        auto* sprite = new SpriteGL;
        sprite->width.Set(kSide);
        sprite->height.Set(kSide);
        sprite->Load(reader);
        sprite->SetTexture(texture_.Get());
        sprite->position.Set({RealFixed::FromInt(i * 37 % (kWidth - kSide)),
                              RealFixed::FromInt(i * 101 % (kHeight - kSide)), RealFixed{}});
        root_->Attach(sprite);
    }
    EngineFrame(false);
    for (Node* child : root_->GetChildren()) {
        prepared_.push_back(Prepare(*static_cast<SpriteGL*>(child)));
    }
}

SpriteScene::~SpriteScene() {
    root_ = {};
    texture_ = {};
    delete device_->solidShader;
    Shader::ReleaseAll();
}

SpriteScene::Prepared SpriteScene::Prepare(SpriteGL const& sprite) const {
    Prepared prepared{};
    const Matrix4T<RealFixed> product =
        sprite.GetWorldMatrix() * device_->GetViewMatrix() * device_->GetProjectionMatrix();
    for (int i = 0; i < 16; ++i) {
        prepared.matrix[static_cast<size_t>(i)] = product[i].ToFloat();
    }
    constexpr int32_t kFar = kSide << 16;
    constexpr int32_t kOneRaw = 65536;
    prepared.vertices = {0, 0, 0, 0, kFar, 0, kFar, 0, 0, kFar, kFar, 0};
    prepared.texCoords = {0, kOneRaw, 0, 0, kOneRaw, kOneRaw, kOneRaw, 0};
    return prepared;
}

void SpriteScene::EngineFrame(bool moving) {
    if (moving) {
        root_->position.Set({RealFixed::FromInt(++frame_ % 2), RealFixed{}, RealFixed{}});
    }
    device_->Clear();
    root_->Update(*device_, RealFixed{});
    root_->Render(*device_);
    device_->Present();
}

void SpriteScene::BareFrame() const {
    ShaderGL const& program = *static_cast<SpriteGL*>(root_->GetChildren()[0])->GetGLShader();
    const auto position = static_cast<GLuint>(program.positionAttribute);
    const auto texCoord = static_cast<GLuint>(program.texCoordAttribute);
    const GLuint texture = texture_->GetGLTexture();
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
    for (Prepared const& sprite : prepared_) {
        glUseProgram(program.program);
        glUniformMatrix4fv(program.modelViewProjUniform, 1, GL_FALSE, sprite.matrix.data());
        glVertexAttribPointer(position, 3, GL_FIXED, GL_FALSE, 0, sprite.vertices.data());
        glEnableVertexAttribArray(position);
        glBlendEquation(GL_FUNC_ADD);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        glBindTexture(GL_TEXTURE_2D, texture);
        glVertexAttribPointer(texCoord, 2, GL_FIXED, GL_FALSE, 0, sprite.texCoords.data());
        glEnableVertexAttribArray(texCoord);
        glUniform4f(program.colorUniform, 1, 1, 1, 1);
        glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
        glDisableVertexAttribArray(texCoord);
        glDisableVertexAttribArray(position);
    }
    glFlush();
}

std::vector<Times> MedianTimes(int rounds, std::vector<std::function<void()>> const& functions) {
    std::vector<std::vector<double>> wall(functions.size());
    std::vector<std::vector<double>> cpu(functions.size());
    for (int round = 0; round < rounds; ++round) {
        for (size_t i = 0; i < functions.size(); ++i) {
            const auto start = std::chrono::steady_clock::now();
            const double cpuStart = CpuNanoseconds();
            functions[i]();
            cpu[i].push_back(CpuNanoseconds() - cpuStart);
            wall[i].push_back(
                std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count());
        }
    }
    const auto median = [](std::vector<double>& values) {
        const auto middle = values.begin() + static_cast<ptrdiff_t>(values.size() / 2);
        std::nth_element(values.begin(), middle, values.end());
        return *middle;
    };
    std::vector<Times> times;
    for (size_t i = 0; i < functions.size(); ++i) {
        times.push_back({median(wall[i]), median(cpu[i])});
    }
    return times;
}

}  // namespace zorvan
