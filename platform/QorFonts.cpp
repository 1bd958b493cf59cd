// Face names to font files through fontconfig, and the Big5/UTF-8 conversions the drawing code uses.
#include "platform/GdiInternal.h"
#include "platform/PlatformInternal.h"
#include "platform/TextRaster.h"
#include "core/QorError.h"
#include "files/QorText.h"

#include <fontconfig/fontconfig.h>

#include <cstring>
#include <map>
#include <string>

namespace qor::detail
{
namespace
{
// The Kai faces in order of preference: the Big5 Kai face of fonts-arphic-bkai00mp, then the Unicode
// Kai face of fonts-arphic-ukai.
const char* const kKaiFamilies[] = {"AR PL KaitiM Big5", "AR PL UKai TW"};

// Names that mean the Kai face: the Windows face "標楷體" (DFKai-SB) in UTF-8 and its Latin names.
const char* const kKaiAliases[] = {"", "\xE6\xA8\x99\xE6\xA5\xB7\xE9\xAB\x94", "dfkai-sb", "kai", "biaukai"};

struct FontConfigState
{
    bool used = false;
    bool shutDown = false;
    std::map<std::string, FaceFile> resolved;
};

FontConfigState& FcState()
{
    static FontConfigState* state = new FontConfigState();
    return *state;
}

std::string Lower(std::string text)
{
    for (char& c : text)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return text;
}

// The best match for a pattern: its file, face index and whether one of its family names equals family.
bool Match(FcPattern* pattern, const std::string& family, FaceFile& file, bool& familyMatched)
{
    FcConfigSubstitute(nullptr, pattern, FcMatchPattern);
    FcDefaultSubstitute(pattern);
    FcResult result = FcResultNoMatch;
    FcPattern* match = FcFontMatch(nullptr, pattern, &result);
    if (!match)
        return false;
    bool found = false;
    FcChar8* path = nullptr;
    if (FcPatternGetString(match, FC_FILE, 0, &path) == FcResultMatch && path)
    {
        int index = 0;
        FcPatternGetInteger(match, FC_INDEX, 0, &index);
        file.path = reinterpret_cast<const char*>(path);
        file.index = index;
        found = true;
    }
    familyMatched = false;
    file.family.clear();
    FcChar8* name = nullptr;
    const std::string wanted = Lower(family);
    for (int i = 0; FcPatternGetString(match, FC_FAMILY, i, &name) == FcResultMatch; ++i)
    {
        if (!name)
            continue;
        // The family reported is the one asked for when the face has it among its names, else its first.
        if (file.family.empty() || Lower(reinterpret_cast<const char*>(name)) == wanted)
            file.family = reinterpret_cast<const char*>(name);
        if (Lower(reinterpret_cast<const char*>(name)) == wanted)
            familyMatched = true;
    }
    FcPatternDestroy(match);
    return found;
}

bool MatchFamily(const std::string& family, FaceFile& file, bool& familyMatched)
{
    FcPattern* pattern = FcPatternCreate();
    if (!pattern)
        return false;
    if (!family.empty())
        FcPatternAddString(pattern, FC_FAMILY, reinterpret_cast<const FcChar8*>(family.c_str()));
    const bool found = Match(pattern, family, file, familyMatched);
    FcPatternDestroy(pattern);
    return found;
}

bool MatchLanguage(const char* language, FaceFile& file)
{
    FcPattern* pattern = FcPatternCreate();
    if (!pattern)
        return false;
    FcPatternAddString(pattern, FC_LANG, reinterpret_cast<const FcChar8*>(language));
    bool familyMatched = false;
    const bool found = Match(pattern, "", file, familyMatched);
    FcPatternDestroy(pattern);
    return found;
}

bool FindKai(FaceFile& file)
{
    for (const char* family : kKaiFamilies)
    {
        bool familyMatched = false;
        if (MatchFamily(family, file, familyMatched) && familyMatched)
            return true;
    }
    // No Kai face installed: any face that covers Traditional Chinese, else fontconfig's default.
    if (MatchLanguage("zh-tw", file))
        return true;
    bool familyMatched = false;
    return MatchFamily("", file, familyMatched);
}

bool Resolve(const std::string& face, FaceFile& file)
{
    const std::string lower = Lower(face);
    for (const char* alias : kKaiAliases)
        if (lower == alias)
            return FindKai(file);
    bool familyMatched = false;
    if (!MatchFamily(face, file, familyMatched))
    {
        file.fallback = true;
        return FindKai(file);
    }
    if (familyMatched)
        return true;
    // fontconfig substitutes a known alias (Arial gives a metric-compatible face) but gives its
    // default face for a name it does not know: that case takes the Kai face.
    FaceFile fallback;
    bool unused = false;
    if (MatchFamily("", fallback, unused) && fallback.path == file.path && fallback.index == file.index)
    {
        file.fallback = true;
        return FindKai(file);
    }
    return true;
}

} // namespace

bool FindFaceFile(const char* big5Face, FaceFile& file)
{
    FontConfigState& state = FcState();
    if (state.shutDown)
        return false;
    std::string face = big5Face ? Big5ToUtf8(big5Face, std::strlen(big5Face)) : std::string();
    // An unknown name is reported each time a font asks for it, not only when first resolved.
    auto report = [&face](const FaceFile& chosen) {
        if (chosen.fallback)
            QorSetError("font \"%s\" not found: the Kai face \"%s\" (%s) stands in", face.c_str(),
                        chosen.family.c_str(), chosen.path.c_str());
    };
    const auto it = state.resolved.find(face);
    if (it != state.resolved.end())
    {
        file = it->second;
        report(file);
        return true;
    }
    if (!state.used)
    {
        state.used = true;
        RegisterPlatformShutdown();
    }
    file = FaceFile();
    if (!Resolve(face, file))
        return QorSetError("font \"%s\": fontconfig finds no font file at all", face.c_str());
    state.resolved[face] = file;
    report(file);
    return true;
}

void ShutDownFontConfig()
{
    FontConfigState& state = FcState();
    if (state.used && !state.shutDown)
        FcFini();
    state.shutDown = true;
    state.resolved.clear();
}

// The shared converters: what does not convert becomes U+FFFD (to UTF-8) or "?" (to Big5).
std::string Big5ToUtf8(const char* text, std::size_t length)
{
    const QorString utf8 = QorBig5ToUtf8(text, length);
    return std::string(static_cast<const char*>(utf8), utf8.GetLength());
}

std::string Utf8ToBig5(const char* text, std::size_t length)
{
    const QorString big5 = QorUtf8ToBig5(text, length);
    return std::string(static_cast<const char*>(big5), big5.GetLength());
}
} // namespace qor::detail
