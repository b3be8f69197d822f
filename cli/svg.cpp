#include "svg.h"

#include <cmath>

#include "print.h"
#include "text.h"

namespace cli {
namespace {

std::size_t CharacterEnd(std::string_view utf8, std::size_t begin) {
  std::size_t end = begin + 1;
  while (end < utf8.size() && (utf8[end] & 0xC0) == 0x80) ++end;
  return end;
}

// In parts of the font's size; generous, for the font is the reader's.
double WidthOf(std::string_view character) {
  if (character.size() > 1) return 1.05;
  constexpr std::string_view narrow = "iIjlt.,:;|!'()[]f ";
  constexpr std::string_view wide = "mwMW@%";
  if (narrow.find(character[0]) != std::string_view::npos) return 0.42;
  if (wide.find(character[0]) != std::string_view::npos) return 1.02;
  return character[0] >= 'A' && character[0] <= 'Z' ? 0.74 : 0.64;
}

constexpr std::string_view definitions = R"xml(<defs>
<pattern id="lost" width="7" height="7" patternUnits="userSpaceOnUse" patternTransform="rotate(45)">
<rect width="7" height="7" fill="#FBEFEF"/><rect width="2.2" height="7" fill="#DDB0B0"/></pattern>
<pattern id="unknown" width="4" height="4" patternUnits="userSpaceOnUse">
<rect width="1.3" height="1.3" fill="#B9C0C8"/></pattern>
<linearGradient id="fadeIn"><stop offset="0" stop-color="#FFF"/><stop offset="1" stop-color="#FFF" stop-opacity="0"/>
</linearGradient>
<linearGradient id="fadeOut"><stop offset="0" stop-color="#FFF" stop-opacity="0"/><stop offset="1" stop-color="#FFF"/>
</linearGradient>
</defs>
)xml";

}  // namespace

std::string Px(double pixels) {
  const auto hundredths = static_cast<std::int64_t>(std::llround(pixels * 100));
  if (hundredths % 100 == 0) return std::to_string(hundredths / 100);
  return fmt::format("{:g}", static_cast<double>(hundredths) / 100);
}

std::string ColourText(std::uint32_t rgb) { return fmt::format("#{:06X}", rgb); }

std::uint32_t Mixed(std::uint32_t rgb, std::uint32_t other, double part) {
  std::uint32_t mixed = 0;
  for (int shift = 0; shift < 24; shift += 8) {
    const double value = (rgb >> shift & 0xFF) * part + (other >> shift & 0xFF) * (1 - part);
    mixed |= static_cast<std::uint32_t>(std::lround(value)) << shift;
  }
  return mixed;
}

std::string XmlText(std::string_view safe) {
  std::string out;
  for (std::size_t i = 0; i < safe.size();) {
    const std::size_t end = CharacterEnd(safe, i);
    const std::string_view character = safe.substr(i, end - i);
    i = end;
    if (character == "&")
      out += "&amp;";
    else if (character == "<")
      out += "&lt;";
    else if (character == ">")
      out += "&gt;";
    else if (character == "\xEF\xBF\xBE")
      out += "\\xEF\\xBF\\xBE";
    else if (character == "\xEF\xBF\xBF")
      out += "\\xEF\\xBF\\xBF";
    else
      out += character;
  }
  return out;
}

std::string FittedText(std::string_view bytes, double pixels, double fontSize) {
  const std::string safe = SafeText(bytes);
  const double room = pixels / fontSize;
  constexpr double ellipsis = 1.0;
  constexpr std::size_t fewestLetters = 4;
  double width = 0;
  std::size_t fits = 0;  // bytes, with room for what says that there is more
  for (std::size_t i = 0; i < safe.size();) {
    const std::size_t end = CharacterEnd(safe, i);
    width += WidthOf(std::string_view(safe).substr(i, end - i));
    if (width + ellipsis <= room) fits = end;
    if (width > room) return fits < fewestLetters ? "" : safe.substr(0, fits) + "…";
    i = end;
  }
  return safe;
}

void SvgPath::Rect(double x, double y, double width, double height) {
  Print(commands_, "M{} {}h{}v{}h{}z", Px(x), Px(y), Px(width), Px(height), Px(-width));
}

void Svg::Close(std::string_view element, std::string_view title) {
  if (title.empty() || !hasTitles_) return Raw("/>\n");
  Print(body_, "><title>{}</title></{}>\n", XmlText(title), element);
}

void Svg::Rect(double x, double y, double width, double height, std::string_view attributes,
               std::string_view title) {
  Print(body_, R"(<rect x="{}" y="{}" width="{}" height="{}" {})", Px(x), Px(y), Px(width), Px(height),
        attributes);
  Close("rect", title);
}

void Svg::Path(const SvgPath& path, std::string_view attributes, std::string_view title) {
  if (path.IsEmpty()) return;
  Print(body_, R"(<path d="{}" {})", path.Commands(), attributes);
  Close("path", title);
}

void Svg::Text(const Box& box, double baseline, Align align, double fontSize, std::string_view attributes,
               std::string_view text) {
  if (text.empty() || box.width <= 0) return;
  const double x = align == Align::left ? 0 : align == Align::right ? box.width : box.width / 2;
  const char* anchor = align == Align::left ? "start" : align == Align::right ? "end" : "middle";
  Print(body_,
        R"(<svg x="{}" y="{}" width="{}" height="{}"><text x="{}" y="{}" font-size="{}" )"
        R"(text-anchor="{}" {}>)",
        Px(box.x), Px(box.y), Px(box.width), Px(box.height), Px(x), Px(baseline - box.y), Px(fontSize),
        anchor, attributes);
  Raw(XmlText(text));
  Raw("</text></svg>\n");
}

std::string Svg::Document(int width, int height) const {
  return fmt::format(
             R"(<svg xmlns="http://www.w3.org/2000/svg" width="{0}" height="{1}" viewBox="0 0 {0} {1}" )"
             "font-family=\"'DejaVu Sans', Verdana, sans-serif\" fill=\"#1B1F24\">\n",
             width, height) +
         std::string(definitions) +
         fmt::format("<rect width=\"{}\" height=\"{}\" fill=\"#FFF\"/>\n", width, height) +
         std::string(body_.data(), body_.size()) + "</svg>\n";
}

}  // namespace cli
