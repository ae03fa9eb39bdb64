#include "strokes/write.h"

#include "strokes/measure.h"
#include "strokes/pieces.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace strokes {

namespace {

using language::Language;

/// What is written in a language. All coordinates are absolute.
struct Words {
    Language language;
    std::string_view begin; ///< chooses absolute coordinates in units of 0.025 mm
    std::string_view pen, up, down;
    std::string_view end; ///< takes the pen home and puts it away
};

constexpr Words kWords[] = {
    {Language::Hpgl, "IN;", "SP", "PU", "PD", "PU0,0;SP0;"},
    {Language::Dmpl, ";:ECN,A,", "P", "U", "D", "U0,0,@"},
};

const Words &wordsOf(Language language) { return *std::ranges::find(kWords, language, &Words::language); }

/// A place in plotter units.
struct Unit {
    int64_t x = 0, y = 0;
    bool operator==(const Unit &) const = default;
};

Unit unitOf(Point p) {
    return {std::llround(p.x * language::kUnitsPerMillimetre), std::llround(p.y * language::kUnitsPerMillimetre)};
}

void append(std::string &text, int64_t number) {
    char digits[24];
    text.append(digits, std::to_chars(std::begin(digits), std::end(digits), number).ptr);
}

void append(std::string &text, Unit at) {
    append(text, at.x);
    text += ',';
    append(text, at.y);
}

size_t lengthOf(int64_t number) { return std::to_string(number).size(); }

/// Bytes of the longest way from a line to the next stroke's: a pen, a move and a line.
size_t longestWay(const Drawing &drawing, const Words &words) {
    const Rectangle extent = extentOf(drawing).value_or(Rectangle{});
    const Unit lower = unitOf(extent.lower), upper = unitOf(extent.upper);
    const size_t place = std::max(lengthOf(lower.x), lengthOf(upper.x)) + std::max(lengthOf(lower.y), lengthOf(upper.y)) + 1;
    int pen = 1;
    for (const Stroke &stroke : drawing.strokes)
        pen = std::max(pen, stroke.pen);
    const size_t ends = 3 * terminatorOf(words.language).size();
    return words.pen.size() + lengthOf(pen) + words.up.size() + words.down.size() + 2 * place + ends;
}

class Writer {
public:
    Writer(const Drawing &drawing, const PlotForm &form)
        : words_(wordsOf(form.language)), terminator_(terminatorOf(form.language)),
          pieces_(form, longestWay(drawing, words_)) {}

    std::string write(const Drawing &drawing) {
        pieces_.add(words_.begin);
        for (const Stroke &stroke : drawing.strokes)
            draw(stroke);
        pieces_.add(words_.end);
        return pieces_.take();
    }

private:
    void draw(const Stroke &stroke) {
        if (stroke.pen != pen_) pieces_.add(instruction(words_.pen, [&] { append(text_, stroke.pen); }));
        pen_ = stroke.pen;
        Unit at = unitOf(stroke.points.front());
        pieces_.add(instruction(words_.up, [&] { append(text_, at); }));
        toDraw_.clear();
        for (Point p : stroke.points) {
            const Unit next = unitOf(p);
            if (next != at) toDraw_.push_back(next);
            at = next;
        }
        if (toDraw_.empty()) toDraw_.push_back(at); // a dot
        for (size_t i = 0; i < toDraw_.size();)
            i = drawFrom(i);
    }

    /// Draws as many points as one instruction may hold; returns which is next.
    size_t drawFrom(size_t i) {
        const ptrdiff_t room = pieces_.room() - static_cast<ptrdiff_t>(terminator_.size());
        text_ = words_.down;
        append(text_, toDraw_[i]);
        for (++i; i < toDraw_.size(); ++i) {
            const size_t length = text_.size();
            text_ += ',';
            append(text_, toDraw_[i]);
            if (static_cast<ptrdiff_t>(text_.size()) <= room) continue;
            text_.resize(length);
            break;
        }
        text_ += terminator_;
        pieces_.addMark(text_);
        return i;
    }

    template <class Add> const std::string &instruction(std::string_view name, Add addParameters) {
        text_ = name;
        addParameters();
        return text_ += terminator_;
    }

    const Words &words_;
    const std::string_view terminator_;
    Pieces pieces_;
    int pen_ = 0;
    std::string text_;         // of an instruction; kept for its memory, as is:
    std::vector<Unit> toDraw_; // a stroke's points behind the first
};

} // namespace

std::string plotOf(const Drawing &drawing, const PlotForm &form) { return Writer(drawing, form).write(drawing); }

} // namespace strokes
