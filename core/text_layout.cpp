#include "core/text_layout.h"

#include <algorithm>

#include "core/text_break.h"

namespace zorvan {
namespace {

constexpr int64_t kPixel = 0x10000;
constexpr int32_t kTabSpaces = 8;
// Stands for a position outside the range of 16.16 until the last pass drops the glyph.
constexpr int32_t kOutside = INT32_MAX;

// Pen positions are 16.16 in 64 bits: no string is long enough to wrap them.
int32_t ToPosition(int64_t value) {
    return value > -INT32_MAX && value < INT32_MAX ? static_cast<int32_t>(value) : kOutside;
}

int64_t FloorPixel(int64_t value) {
    return value & -kPixel;
}

int64_t RoundPixel(int64_t value) {
    return FloorPixel(value + kPixel / 2);
}

// Lines are placed one after another; the glyphs of the line at the pen are out[lineStart_...].
class Layouter {
  public:
    Layouter(GlyphSource const& source, TextLayoutOptions const& options, std::vector<PlacedGlyph>& out)
        : source_(source),
          options_(options),
          out_(out),
          letterSpacing_(std::clamp(options.letterSpacing, -32767, 32767) * kPixel),
          lineStep_(source.lineHeight.raw + std::clamp(options.lineSpacing, -32767, 32767) * kPixel),
          limit_(options.hasBox && options.box.width.raw > 0 ? options.box.width.raw : INT64_MAX) {}

    TextExtent Run(std::wstring_view text) {
        out_.clear();
        uint32_t last = 0;
        for (wchar_t unit : text) {
            const auto c = static_cast<uint32_t>(unit);
            if (IsLineBreak(c)) {
                if (!(c == '\n' && last == '\r')) {
                    EndLine(out_.size(), inkEnd_);
                    StartLine();
                }
            } else if (IsBreakingSpace(c)) {
                AddSpace(c);
            } else if (!IsInvisible(c)) {
                AddLetter(c);
            }
            last = c;
        }
        EndLine(out_.size(), inkEnd_);
        const int64_t height = source_.lineHeight.raw + (lines_ - 1) * lineStep_;
        Finish(height);
        return {RealFixed::FromRaw(ToPosition(widest_)), RealFixed::FromRaw(ToPosition(height)),
                static_cast<uint32_t>(std::min<int64_t>(lines_, UINT32_MAX))};
    }

  private:
    void AddSpace(uint32_t c) {
        Glyph const* space = source_.Find(c == '\t' ? ' ' : c);
        const int64_t advance = space != nullptr ? int64_t{space->advance.raw} : 0;
        if (c == '\t' && advance > 0) {
            const int64_t stop = advance * kTabSpaces;
            pen_ = (std::max<int64_t>(pen_, 0) / stop + 1) * stop;
        } else if (c != 0x200B) {
            pen_ += advance + letterSpacing_;
        }
        previous_ = nullptr;
        AllowBreak();
    }

    void AddLetter(uint32_t c) {
        Glyph const* glyph = source_.Find(c);
        if (glyph == nullptr) {
            return;
        }
        const bool inWord = previous_ != nullptr;
        // A hyphen that begins a word is a minus or a bullet.
        if (inWord && BreaksBetween(last_, c) && !(IsHyphen(last_) && lastBeganWord_)) {
            AllowBreak();
        }
        // A mark without advance stands on the letter before it.
        const bool mark = inWord && glyph->advance.raw == 0;
        pen_ += mark ? -letterSpacing_ : inWord ? source_.Kerning(*previous_, *glyph).raw : 0;
        // A word that is longer than the box breaks where it must.
        while (pen_ + glyph->advance.raw > limit_ && (out_.size() > lineStart_ || pen_ > 0)) {
            Wrap(canBreak_ ? break_ : out_.size(), canBreak_ ? breakInkEnd_ : inkEnd_);
        }
        out_.push_back({glyph, {RealFixed::FromRaw(ToPosition(pen_)), RealFixed{}}});
        inkEnd_ = pen_ + glyph->advance.raw;
        pen_ = inkEnd_ + letterSpacing_;
        previous_ = glyph;
        last_ = c;
        lastBeganWord_ = !inWord;
    }

    void AllowBreak() {
        // Spaces at the start of a line belong to it.
        if (out_.size() > lineStart_) {
            canBreak_ = true;
            break_ = out_.size();
            breakInkEnd_ = inkEnd_;
        }
    }

    // Ends the line before the glyph at index and moves the glyphs from there to the next line.
    void Wrap(size_t index, int64_t lineEnd) {
        const bool moves = index < out_.size();
        const int64_t start = moves ? int64_t{out_[index].position.x.raw} : pen_;
        const int64_t pen = pen_ - start, inkEnd = inkEnd_ - start;
        EndLine(index, lineEnd);
        StartLine();
        lineStart_ = index;
        if (moves) {
            for (size_t i = index; i < out_.size(); ++i) {
                int32_t& x = out_[i].position.x.raw;
                x = x == kOutside ? x : ToPosition(x - start);
            }
            pen_ = pen;
            inkEnd_ = inkEnd;
        }
    }

    void StartLine() {
        lineStart_ = out_.size();
        pen_ = inkEnd_ = 0;
        previous_ = nullptr;
        canBreak_ = false;
    }

    // Aligns the line's glyphs, those up to index; width reaches to the end of the last one.
    void EndLine(size_t index, int64_t width) {
        widest_ = std::max(widest_, width);
        int64_t shift = 0;
        if (options_.hasBox) {
            const int64_t room = options_.box.width.raw - width;
            const int32_t horizontal = options_.alignment & TextAlignment::kHorizontalMask;
            shift = horizontal == TextAlignment::Center  ? FloorPixel(room >> 1)
                    : horizontal == TextAlignment::Right ? FloorPixel(room)
                                                         : 0;
        }
        const int32_t y = ToPosition(lines_ * lineStep_);
        for (size_t i = lineStart_; i < index; ++i) {
            Vector2T<RealFixed>& position = out_[i].position;
            if (position.x.raw != kOutside) {
                position.x.raw = ToPosition(position.x.raw + shift);
            }
            position.y.raw = y;
        }
        ++lines_;
    }

    // From pens to top left corners; drops what has no ink or no place.
    void Finish(int64_t height) {
        int64_t top = 0;
        if (options_.hasBox) {
            const int64_t room = options_.box.height.raw - height;
            const int32_t vertical = options_.alignment & TextAlignment::kVerticalMask;
            top = vertical == TextAlignment::Middle   ? FloorPixel(room >> 1)
                  : vertical == TextAlignment::Bottom ? FloorPixel(room)
                                                      : 0;
        }
        top += source_.ascent.raw;
        size_t kept = 0;
        for (PlacedGlyph const& placed : out_) {
            Glyph const& glyph = *placed.glyph;
            const Vector2T<RealFixed> pen = placed.position;
            if (glyph.width == 0 || glyph.height == 0 || pen.x.raw == kOutside || pen.y.raw == kOutside) {
                continue;
            }
            const int32_t x = ToPosition(RoundPixel(int64_t{pen.x.raw} + glyph.offsetX.raw));
            const int32_t y = ToPosition(RoundPixel(top + pen.y.raw + glyph.offsetY.raw));
            if (x != kOutside && y != kOutside) {
                out_[kept++] = {&glyph, {RealFixed::FromRaw(x), RealFixed::FromRaw(y)}};
            }
        }
        out_.resize(kept);
    }

    GlyphSource const& source_;
    TextLayoutOptions const& options_;
    std::vector<PlacedGlyph>& out_;
    const int64_t letterSpacing_, lineStep_, limit_;

    // The line at the pen, from its start: the pen, and the end of its last letter.
    size_t lineStart_ = 0;
    int64_t pen_ = 0, inkEnd_ = 0;
    Glyph const* previous_ = nullptr;
    // The letter before the pen, as a character, while previous_ is set.
    uint32_t last_ = 0;
    bool lastBeganWord_ = false;
    // Its last place for a break: the first glyph behind it, and the line's end before it.
    bool canBreak_ = false;
    size_t break_ = 0;
    int64_t breakInkEnd_ = 0;

    int64_t lines_ = 0, widest_ = 0;
};

}  // namespace

TextExtent LayOutText(std::wstring_view text, GlyphSource const& source, TextLayoutOptions const& options,
                      std::vector<PlacedGlyph>& glyphs) {
    return Layouter(source, options, glyphs).Run(text);
}

}  // namespace zorvan
