// Writes SVG: shapes in pixels, and text from anywhere made safe.
#pragma once

#include <fmt/format.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace cli {

// "12.25", "-3", "0.5": what XML has room for and no eye misses.
std::string Px(double pixels);
std::string ColourText(std::uint32_t rgb);  // "#E69F00"
// `part` of 1 of the colour, the rest of the other one.
std::uint32_t Mixed(std::uint32_t rgb, std::uint32_t other, double part);

// SafeText as the content of an element: what XML takes for markup escaped, what it does not allow as \xNN.
std::string XmlText(std::string_view safe);

// SafeText that is not wider than so many pixels, as far as one can know without the font; what is cut off
// leaves "…". Empty when hardly a letter of it fits.
std::string FittedText(std::string_view bytes, double pixels, double fontSize);

// A path of many shapes of one colour.
class SvgPath {
 public:
  void Rect(double x, double y, double width, double height);
  void Append(std::string_view commands) { commands_.append(commands); }
  bool IsEmpty() const { return commands_.size() == 0; }
  std::string_view Commands() const { return {commands_.data(), commands_.size()}; }

 private:
  fmt::memory_buffer commands_;
};

class Svg {
 public:
  // With titles, a browser tells more of what the pointer is over.
  explicit Svg(bool withTitles) : hasTitles_(withTitles) {}

  bool HasTitles() const { return hasTitles_; }
  // `attributes` are ours, never from outside; titles and text are SafeText.
  void Rect(double x, double y, double width, double height, std::string_view attributes,
            std::string_view title = {});
  void Path(const SvgPath& path, std::string_view attributes, std::string_view title = {});
  // Nothing is drawn outside of the box. The baseline lies at `baseline`.
  struct Box {
    double x, y, width, height;
  };
  enum class Align { left, middle, right };
  void Text(const Box& box, double baseline, Align align, double fontSize, std::string_view attributes,
            std::string_view text);
  void Raw(std::string_view markup) { body_.append(markup); }

  // The whole document.
  std::string Document(int width, int height) const;

 private:
  void Close(std::string_view element, std::string_view title);

  bool hasTitles_;
  fmt::memory_buffer body_;
};

}  // namespace cli
