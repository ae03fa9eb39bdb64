#include "strokes/svg_path.h"

#include "strokes/svg_values.h"

#include <array>

namespace strokes {

namespace {

constexpr double kFarthest = 1e6; // millimetres
constexpr double kMostChords = 10'000;

bool isNear(Point p) { return std::abs(p.x) <= kFarthest && std::abs(p.y) <= kFarthest; }

class PathReader {
public:
    PathReader(std::string_view data, const Affine &toPage) : data_(data), toPage_(toPage) {}

    bool read() {
        for (char instruction = 0; next(instruction);) {
            if (!step(instruction)) return false;
            if (instruction == 'M') instruction = 'L'; // further pairs of numbers are lines
        }
        return data_.empty();
    }

    /// Without those of a move alone.
    std::vector<Contour> take() {
        std::erase_if(contours_, [](const Contour &contour) { return contour.points.size() < 2; });
        return std::move(contours_);
    }

private:
    /// To the next instruction, or to further numbers of this one; false at the end.
    bool next(char &instruction) {
        data_.remove_prefix(std::min(data_.find_first_not_of(" \t\r\n,"), data_.size()));
        if (data_.empty()) return false;
        const char c = data_.front();
        const bool isNumber = (c >= '0' && c <= '9') || c == '-' || c == '+' || c == '.';
        if (isNumber) return instruction != 'Z'; // which takes none
        instruction = c;
        data_.remove_prefix(1);
        return true;
    }

    bool step(char instruction) {
        switch (instruction) {
        case 'M': return move();
        case 'L': return take(at_.x) && take(at_.y) && add(at_);
        case 'H': return take(at_.x) && add(at_);
        case 'V': return take(at_.y) && add(at_);
        case 'C': return curve();
        case 'Z': return close();
        default: return false;
        }
    }

    bool take(double &value) {
        const auto number = takeNumber(data_);
        value = number.value_or(0);
        return number && std::isfinite(value);
    }

    bool move() {
        if (!take(at_.x) || !take(at_.y)) return false;
        start_ = at_;
        isOpen_ = false;
        return add(at_);
    }

    /// What follows a Z without an M goes on from where the last part began.
    bool begin() {
        if (isOpen_) return true;
        isOpen_ = true;
        contours_.emplace_back();
        return push(toPage_(start_));
    }

    bool push(Point p) {
        if (!isNear(p)) return false;
        contours_.back().points.push_back(p);
        return true;
    }

    bool add(Point p) { return isOpen_ ? push(toPage_(p)) : begin() && (p == start_ || push(toPage_(p))); }

    bool close() {
        if (isOpen_ && !contours_.empty()) {
            auto &[points, isClosed] = contours_.back();
            if (points.front() != points.back()) points.push_back(points.front());
            isClosed = true;
        }
        isOpen_ = false;
        at_ = start_;
        return true;
    }

    bool curve() {
        std::array<Point, 4> p;
        p[0] = toPage_(at_);
        for (size_t i = 1; i < p.size(); ++i) {
            if (!take(at_.x) || !take(at_.y)) return false;
            p[i] = toPage_(at_);
        }
        return begin() && flatten(p);
    }

    /// Between n + 1 points that are even in time, chords lie at most 1/8 B''/n^2 beside the curve, and B'' is at most six
    /// times the larger second difference of its points.
    bool flatten(const std::array<Point, 4> &p) {
        auto bend = [](Point a, Point b, Point c) { return std::hypot(a.x - 2 * b.x + c.x, a.y - 2 * b.y + c.y); };
        const double most = std::max(bend(p[0], p[1], p[2]), bend(p[1], p[2], p[3]));
        if (!std::isfinite(most)) return false;
        const int chords = static_cast<int>(std::clamp(std::ceil(std::sqrt(0.75 * most / kFlatness)), 1.0, kMostChords));
        for (int i = 1; i < chords; ++i) {
            const double t = static_cast<double>(i) / chords, s = 1 - t;
            const double k[] = {s * s * s, 3 * s * s * t, 3 * s * t * t, t * t * t};
            if (!push({k[0] * p[0].x + k[1] * p[1].x + k[2] * p[2].x + k[3] * p[3].x,
                       k[0] * p[0].y + k[1] * p[1].y + k[2] * p[2].y + k[3] * p[3].y}))
                return false;
        }
        return push(p[3]);
    }

    std::string_view data_;
    Affine toPage_;
    Point at_, start_;
    bool isOpen_ = false; ///< the last contour is being written
    std::vector<Contour> contours_;
};

} // namespace

std::optional<std::vector<Contour>> contoursOf(std::string_view data, const Affine &toPage) {
    PathReader reader(data, toPage);
    if (!reader.read()) return {};
    return reader.take();
}

std::optional<std::vector<Contour>> rectangleContours(Point corner, double width, double height, const Affine &toPage) {
    if (width <= 0 || height <= 0) return std::vector<Contour>();
    const Point far{corner.x + width, corner.y + height};
    Contour contour{{}, true};
    for (const Point p : {corner, Point{far.x, corner.y}, far, Point{corner.x, far.y}, corner}) {
        contour.points.push_back(toPage(p));
        if (!isNear(contour.points.back())) return {};
    }
    return std::vector{std::move(contour)};
}

} // namespace strokes
