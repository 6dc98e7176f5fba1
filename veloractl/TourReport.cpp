#include "veloractl/TourReport.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>

#include "veloractl/DescribedJson.h"

namespace veloractl {
namespace {

constexpr char kHead[] = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width">
<title>A tour of VeloraCtlApi</title>
<link rel="icon" href="data:,">
<style>
body { font: 16px/1.5 system-ui, sans-serif; max-width: 62em; margin: 2em auto; padding: 0 1em; color: #222; }
h2 { margin-bottom: 0; }
section { border-top: 1px solid #ccc; padding-bottom: 1em; }
ul { list-style: none; padding-left: 0; }
.yes::before { content: "\2713"; color: #080; padding-right: .6em; }
.no::before { content: "\2717"; color: #b00; padding-right: .6em; }
.no { color: #b00; }
img { max-width: 480px; margin: .5em 1em .5em 0; vertical-align: top; }
pre { background: #f5f5f5; padding: 1em; overflow: auto; font-size: 13px; max-height: 30em; }
.facts { color: #666; }
</style>
</head>
<body>
)";

std::string Escaped(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

std::string Base64(const std::vector<uint8_t>& bytes) {
  constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (size_t i = 0; i < bytes.size(); i += 3) {
    const size_t count = std::min<size_t>(3, bytes.size() - i);
    uint32_t word = 0;
    for (size_t k = 0; k < 3; ++k) {
      word = word << 8 | (k < count ? bytes[i + k] : 0U);
    }
    for (size_t k = 0; k < 4; ++k) {
      text += k <= count ? kDigits[word >> (18 - 6 * k) & 63] : '=';
    }
  }
  return text;
}

std::string Picture(const std::string& path) {
  const bool isSvg = path.ends_with(".svg");
  const std::string name = path.substr(path.find_last_of("\\/") + 1);
  return "<img alt=\"" + Escaped(name) + "\" src=\"data:image/" + (isSvg ? "svg+xml" : "png") +
         ";base64," + Base64(ReadBinaryFile(ToUtf8(path))) + "\">\n";
}

std::string Facts(const ShownAct& act) {
  char text[80];
  std::snprintf(text, sizeof text, "result %d in %.2f ms", static_cast<int>(act.result),
                act.milliseconds);
  return text;
}

std::string Act(size_t number, const ShownAct& act) {
  std::string html = "<section id=\"act" + std::to_string(number) + "\">\n<h2>" +
                     std::to_string(number) + ". " + Escaped(act.title) + "</h2>\n<p>" +
                     Escaped(act.story) + "</p>\n<p class=\"facts\">" + Facts(act) + "</p>\n<ul>\n";
  for (const ShownCheck& check : act.checks) {
    html += std::string("<li class=\"") + (check.held ? "yes" : "no") + "\">" +
            Escaped(check.announced) + "</li>\n";
  }
  html += "</ul>\n";
  for (const std::string& picture : act.pictures) {
    html += Picture(picture);
  }
  html += "<details><summary>The library's log, " + std::to_string(act.log.size()) +
          " lines</summary>\n<pre>";
  for (const std::string& line : act.log) {
    html += Escaped(line) + "\n";
  }
  if (act.linesLeftOut > 0) {
    html += "and " + std::to_string(act.linesLeftOut) + " more lines\n";
  }
  return html + "</pre></details>\n</section>\n";
}

std::string Panel(const virtualnotebook::PanelDescription& panel) {
  char text[200];
  std::snprintf(text, sizeof text,
                "%s %04X, week %d of %d, gamma %.2f; red %.3f %.3f, green %.3f %.3f, blue %.3f "
                "%.3f, white %.3f %.3f",
                panel.vendor.c_str(), panel.product, int{panel.week}, panel.year, panel.gamma,
                panel.red.x, panel.red.y, panel.green.x, panel.green.y, panel.blue.x, panel.blue.y,
                panel.white.x, panel.white.y);
  return text;
}

}  // namespace

std::string HtmlOf(const ShownTour& shown) {
  const auto good = std::ranges::count_if(shown.acts, &ShownAct::IsGood);
  std::string html = kHead;
  html +=
      "<h1>A tour of VeloraCtlApi</h1>\n<p>Each act is a call or two of the library on a "
      "virtual notebook: what was announced, whether it came so, what the panel showed, and "
      "what the library logged. " +
      std::to_string(good) + " of " + std::to_string(shown.acts.size()) +
      " acts ended as announced.</p>\n<p>The panel: " + Escaped(Panel(shown.panel)) + "</p>\n";
  for (const std::string& picture : shown.pictures) {
    html += Picture(picture);
  }
  html += "<ol>\n";
  for (size_t i = 0; i < shown.acts.size(); ++i) {
    html += "<li><a href=\"#act" + std::to_string(i + 1) + "\">" + Escaped(shown.acts[i].title) +
            "</a>" + (shown.acts[i].IsGood() ? "" : " - not as announced") + "</li>\n";
  }
  html += "</ol>\n";
  for (size_t i = 0; i < shown.acts.size(); ++i) {
    html += Act(i + 1, shown.acts[i]);
  }
  return html + "</body>\n</html>\n";
}

}  // namespace veloractl
