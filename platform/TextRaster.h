#pragma once

// Fonts for the drawing layer: a face name is found through fontconfig (QorFonts.cpp) and text is
// rasterised with SDL_ttf (sdl2/QorSdlText.cpp; it needs no video, so the headless port uses it too).
#include "platform/QorWinTypes.h"

#include <string>
#include <vector>

namespace qor::detail
{
/// A font file and the index of the face inside it.
struct FaceFile
{
    std::string path;
    int index = 0;
    /// The family name of the face chosen (what GetTextFaceA reports).
    std::string family;
    /// True when the name asked for was not found and the Kai face stands in for it.
    bool fallback = false;
};

/// Resolves a face name given in Big5 bytes. The empty name and the Kai names ("標楷體", "DFKai-SB",
/// "Kai") give the Kai face; a name fontconfig does not know falls back to the Kai face too, since the
/// library's text is Traditional Chinese, and that is reported through QorSetError. False when no font
/// file can be found at all.
bool FindFaceFile(const char* big5Face, FaceFile& file);
/// The number of characters of UTF-8 text the face has no glyph for (control characters are not counted).
long CountMissingGlyphs(const FaceFile& face, const std::string& utf8);

/// What a context's font asks of the rasteriser.
struct FontRequest
{
    FaceFile face;
    /// As LOGFONT: below 0 the character (em) height, above 0 the cell height, 0 the default 16.
    long height = 0;
    /// As LOGFONT: 0 keeps the face's proportions, else the average character width.
    long width = 0;
    bool bold = false;
    bool italic = false;
    bool underline = false;
    bool strikeOut = false;
    /// Smoothed edges; otherwise every pixel of a glyph is fully on or off.
    bool antialias = false;
};

struct FontMetrics
{
    /// The character (em) height the face was scaled to.
    long emHeight = 0;
    long height = 0;
    long ascent = 0;
    long descent = 0;
    long lineSkip = 0;
    long aveCharWidth = 0;
    long maxCharWidth = 0;
};

bool GetRasterMetrics(const FontRequest& request, FontMetrics& metrics);
/// The size of a line of UTF-8 text: its advance and the font's height.
bool MeasureRasterText(const FontRequest& request, const std::string& utf8, long& width, long& height);
/// Renders a line of UTF-8 text: coverage receives width x height bytes, 0 (blank) to 255 (ink).
bool RenderRasterText(const FontRequest& request, const std::string& utf8, std::vector<unsigned char>& coverage,
                      long& width, long& height);
} // namespace qor::detail
