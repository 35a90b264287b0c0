// Lines of text over the viewer's picture, drawn by the engine itself.
#pragma once

#include <memory>
#include <string>

#include "core/scene.h"
#include "tools/zorvan/stage.h"

namespace zorvan::tool {

// A font for the overlay from the system's or the user's font folders, or an empty text.
std::string FindOverlayFont();

class Overlay {
  public:
    // Null without a usable font.
    static std::unique_ptr<Overlay> Create(Stage& stage, std::string const& fontPath);

    // Draws over what the stage has drawn. Both texts are UTF-8; an error gets a panel of its own.
    void Draw(std::string const& text, std::string const& error);

  private:
    explicit Overlay(Stage& stage) : stage_(stage) {}
    bool Load(std::string const& fontPath);
    void SetText(char const* name, std::string const& text);
    Node* Find(char const* name);

    Stage& stage_;
    Scene scene_;
};

}  // namespace zorvan::tool
