#include "adapters/win32/style.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <tuple>

namespace tarnex {

namespace {

constexpr UINT kPlainDpi = 96;
// Chinese characters are crowded at the size that is enough for Latin ones.
constexpr double kLettersToMessages = 1.25;
constexpr double kLeastLetters = 15; // pixels at 96 dpi
constexpr double kLine = 4.0 / 3;    // height of a line of a list, in letters

// Of those that the windows use; a font with these has the others.
constexpr std::wstring_view kSample = L"设备短信链路";

LOGFONTW MessageFont(UINT dpi) {
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof metrics;
    SystemParametersInfoForDpi(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0, dpi);
    return metrics.lfMessageFont;
}

LOGFONTW Named(std::wstring_view face, BYTE charset) {
    LOGFONTW font{};
    font.lfCharSet = charset;
    face.copy(font.lfFaceName, LF_FACESIZE - 1);
    return font;
}

bool HasSample(HDC context, const LOGFONTW& font) {
    const HFONT made = CreateFontIndirectW(&font);
    const HGDIOBJ before = SelectObject(context, made);
    std::array<WORD, kSample.size()> glyphs{};
    GetGlyphIndicesW(context, kSample.data(), int(kSample.size()), glyphs.data(),
                     GGI_MARK_NONEXISTING_GLYPHS);
    SelectObject(context, before);
    DeleteObject(made);
    return std::ranges::find(glyphs, WORD(0xFFFF)) == glyphs.end();
}

struct Search {
    HDC context;
    std::wstring face{};
    // Of the face: plain strokes, letters as wide as they need.
    std::tuple<bool, bool> rank{};
};

int CALLBACK Consider(const LOGFONTW* font, const TEXTMETRICW*, DWORD, LPARAM parameter) {
    auto& search = *reinterpret_cast<Search*>(parameter);
    const std::tuple rank{(font->lfPitchAndFamily & 0xF0) == FF_SWISS,
                          (font->lfPitchAndFamily & 0x03) == VARIABLE_PITCH};
    const bool upright = font->lfFaceName[0] != L'@';
    if (upright && (search.face.empty() || rank > search.rank) &&
        HasSample(search.context, Named(font->lfFaceName, font->lfCharSet))) {
        search.face = font->lfFaceName;
        search.rank = rank;
    }
    return 1;
}

int Rounded(double pixels) {
    return int(std::lround(pixels));
}

} // namespace

std::wstring ChineseFace() {
    const HDC context = CreateCompatibleDC(nullptr);
    Search search{.context = context};
    const LOGFONTW message = MessageFont(kPlainDpi);
    if (HasSample(context, message))
        search.face = message.lfFaceName;
    for (const BYTE charset : {GB2312_CHARSET, DEFAULT_CHARSET})
        if (LOGFONTW any = Named(L"", charset); search.face.empty())
            EnumFontFamiliesExW(context, &any, Consider, reinterpret_cast<LPARAM>(&search), 0);
    DeleteDC(context);
    return search.face;
}

Style::Style(UINT dpi) : dpi_(dpi), measuring_(CreateCompatibleDC(nullptr)) {
    const double scale = double(dpi) / kPlainDpi;
    LOGFONTW font = MessageFont(dpi);
    const int letters =
        Rounded(std::max(kLeastLetters * scale, std::abs(font.lfHeight) * kLettersToMessages));
    static const std::wstring face = ChineseFace(); // it stays while the process runs
    if (!face.empty())
        font = Named(face, DEFAULT_CHARSET);
    font.lfQuality = CLEARTYPE_QUALITY;
    font.lfHeight = -letters;
    plain_.reset(CreateFontIndirectW(&font));
    font.lfWeight = FW_BOLD;
    bold_.reset(CreateFontIndirectW(&font));
    font.lfHeight = -Rounded(letters * kStrongLetters);
    strong_.reset(CreateFontIndirectW(&font));
    SelectObject(measuring_.get(), plain_.get());
    TEXTMETRICW text{};
    GetTextMetricsW(measuring_.get(), &text);
    text_height_ = int(text.tmHeight);
    line_height_ = Rounded(letters * kLine);
    metrics_ = {.scale = scale,
                .em = letters,
                .scroll_bar = GetSystemMetricsForDpi(SM_CXVSCROLL, dpi),
                .text_width = [context = measuring_.get()](TextView text) {
                    SIZE size{};
                    const std::wstring wide = Wide(text);
                    GetTextExtentPoint32W(context, wide.data(), int(wide.size()), &size);
                    return int(size.cx);
                }};
}

std::wstring Wide(TextView text) {
    return {text.begin(), text.end()};
}

} // namespace tarnex
