// An SVG drawing as a tree with names, and its page.
#pragma once

#include "strokes/affine.h"
#include "strokes/contour.h"
#include "strokes/svg_values.h"

#include <optional>
#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <unordered_map>

namespace strokes {

class SvgDocument {
public:
    /// Throws Unreadable for what is no SVG, and for a page without a size or of more than a kilometre. Loads nothing that
    /// the drawing refers to, and expands no entities beyond XML's own.
    explicit SvgDocument(std::string svg);

    pugi::xml_node root() const { return root_; }
    /// An element by its name; none when there is no such.
    pugi::xml_node named(std::string_view name) const;
    /// What a use element stands for.
    pugi::xml_node target(pugi::xml_node use) const;

    /// In millimetres, from its lower left corner.
    const Box &page() const { return page_; }
    /// From the units of the drawing's root to millimetres, y up.
    const Affine &toPage() const { return toPage_; }

    /// What is plotted of a gradient: its first colour that is seen on paper.
    struct Gradient {
        uint32_t colour;
        bool isOpaque;
    };
    /// Nothing when the name is that of no gradient.
    std::optional<Gradient> gradient(std::string_view name) const;

private:
    void setPage();

    std::string text_; ///< the tree's names and values are parts of it
    pugi::xml_document document_;
    pugi::xml_node root_;
    std::unordered_map<std::string_view, pugi::xml_node> named_;
    Box page_;
    Affine toPage_;
};

/// White, or so light that no pen would be taken for it.
bool isPaperColour(uint32_t colour);

} // namespace strokes
