#pragma once

#include "core/QorExport.h"

#include "qor/core.h"
#include "qor/files.h"
#include "qor/platform.h"

#include <cstdint>

/// A palette entry: red, green, blue, then a flags byte (4 by default: never collapse onto another entry).
struct QOR_API stPaletteEntry
{
    stPaletteEntry() = default;
    /// The four bytes of value, lowest first: red, green, blue, flags.
    stPaletteEntry& operator=(std::uint32_t value)
    {
        peRed = static_cast<BYTE>(value);
        peGreen = static_cast<BYTE>(value >> 8);
        peBlue = static_cast<BYTE>(value >> 16);
        peFlags = static_cast<BYTE>(value >> 24);
        return *this;
    }
    stPaletteEntry& operator=(const stPaletteEntry&) = default;
    stPaletteEntry(const stPaletteEntry&) = default;

    BYTE peRed = 0;
    BYTE peGreen = 0;
    BYTE peBlue = 0;
    BYTE peFlags = 4;
};
static_assert(sizeof(stPaletteEntry) == 4, "a palette entry is four bytes");

/// The pixel buffer of the library: rows top to bottom, no padding, in one of four colour types, with a
/// mask colour (the transparent key) and a borrowed palette for 8-bit pictures.
/// \note Pixel (x, y) starts at byte (width * y + x) * bytes per pixel. Colours are passed as pointers to
///       bytes-per-pixel bytes in the picture's own layout; rectangles are inclusive on all four sides.
class QOR_API QorPicBlock : public QorDataBlock
{
public:
    enum ColorType : std::int32_t
    {
        Bit8 = 1,
        Bit16 = 2,
        Bit24 = 3,
        Bit32 = 4,
    };

    /// An empty 8-bit picture.
    QorPicBlock();
    explicit QorPicBlock(ColorType type);
    /// A w x h picture of type; the pixels start zeroed.
    QorPicBlock(ColorType type, long w, long h);
    /// A w x h picture of type with every pixel set to colour.
    QorPicBlock(ColorType type, long w, long h, unsigned char* colour);
    /// A copy of the whole of src (pixels, mask colour; the palette pointer is shared).
    QorPicBlock(const QorPicBlock& src);
    /// A copy of src's rectangle (x1, y1)-(x2, y2).
    QorPicBlock(const QorPicBlock& src, long x1, long y1, long x2, long y2);
    /// Copies the whole of src.
    QorPicBlock& operator=(const QorPicBlock& src);
    ~QorPicBlock() override;

    /// Sets the type and size. Same type and size keep the buffer and its content; otherwise the new
    /// buffer starts zeroed. Attached pictures change type but never size.
    /// \note A size whose byte count does not fit in 32 bits is refused: type and size stay as they were.
    void Reset(ColorType type, long w, long h);
    void Reset(long w, long h);
    void Reset(ColorType type, long w, long h, unsigned char* colour);
    void Reset(long w, long h, unsigned char* colour);
    /// Uses the caller's pixels (w x h in the picture's type) for good: Reset never resizes it again.
    /// \note The caller keeps ownership of data and keeps it alive as long as the picture.
    void Attach(long w, long h, unsigned char* data);
    void Attach(ColorType type, long w, long h, unsigned char* data);

    ColorType GetColorType() const { return m_colorType; }
    unsigned short GetBitsPerPixel() const { return m_bitsPerPixel; }
    unsigned short GetBytesPerPixel() const { return m_bytesPerPixel; }
    long GetWidth() const { return m_width; }
    long GetHeight() const { return m_height; }
    unsigned char* GetDataPtr() const { return m_data; }
    /// bits per pixel x width x height / 8, rounded up.
    unsigned long GetSize() const;
    char IsAttached() const { return m_attached; }
    /// Address of pixel (x, y); not bounds-checked.
    unsigned char* GetPixel(long x, long y) const { return m_data + (m_width * y + x) * m_bytesPerPixel; }
    /// The mask colour's bytes-per-pixel bytes (zero until SetMask).
    unsigned char* GetMask() const { return m_mask; }
    stPaletteEntry* GetPaletteEntryPtr() const { return m_palette; }
    /// Stores the borrowed palette pointer; returns the previous one.
    void* SetPaletteEntryPtr(stPaletteEntry* palette);
    /// Copies bytes-per-pixel bytes of colour into the mask colour.
    void SetMask(const unsigned char* colour);

    /// Sets every pixel to colour.
    void Fill(const unsigned char* colour);
    /// Sets the pixels of the rectangle, ordered and clipped to the picture, to colour.
    void Fill(long x1, long y1, long x2, long y2, const unsigned char* colour);
    void Fill(const QorRect& rect, const unsigned char* colour);
    /// Tiles pattern over the whole picture from (0, 0).
    void Fill(const QorPicBlock& pattern);
    /// Tiles pattern over the clipped rectangle, anchored at its clipped top-left corner. Nothing happens
    /// for a pattern of another colour type or an empty pattern; the picture itself tiles its old pixels.
    void Fill(long x1, long y1, long x2, long y2, const QorPicBlock& pattern);
    void Fill(const QorRect& rect, const QorPicBlock& pattern);

    /// This picture becomes src's rectangle (x1, y1)-(x2, y2), src's type, mask colour and palette pointer.
    /// \note The corners are not ordered; parts of the rectangle outside src become zero. A rectangle
    ///       whose size Reset refuses leaves the picture unchanged.
    void Copy(const QorPicBlock& src, long x1, long y1, long x2, long y2);
    void Copy(const QorPicBlock& src, const QorRect& rect);

    /// Grey level of (red a, green b, blue c): c * 0.11 + b * 0.59 + a * 0.3, truncated.
    static unsigned char ColorToGray(unsigned char a, unsigned char b, unsigned char c);

    /// QBM: the "BMPQ" tag, version, reserved words, type, 16-bit width and height, pixels, mask colour.
    /// All readers and writers return the bytes the stream moved, 0 when the stream is closed.
    unsigned long SaveQBM(QorFile& file);
    /// A wrong tag restores the stream position and returns 0. A header that is short, names an unknown
    /// type, asks for more pixel bytes than the stream holds, or would resize an attached picture is
    /// refused the same way; the picture is then unchanged.
    unsigned long LoadQBM(QorFile& file);
    /// QGB: type, width and height as 32-bit values, pixels, mask colour (the layout inside groups).
    unsigned long SaveQGB(QorFile& file);
    /// Refuses (0, stream position restored, picture unchanged) what LoadQBM refuses.
    unsigned long LoadQGB(QorFile& file);
    unsigned long SaveData(QorFile& file) override { return SaveQGB(file); }
    unsigned long LoadData(QorFile& file) override { return LoadQGB(file); }
    /// Raw 8-bit pixels whose size comes from sizeText: its first five characters are skipped, then the
    /// width, a blank and the height (read with atol).
    unsigned long LoadFix(QorFile& file, QorString& sizeText);
    /// Reads by format tag: "BMPQ", "QGB ", "BMP " and "PCX " (both read nothing), or "FIX  " followed by
    /// five ignored characters, the width, a blank and the height.
    unsigned long Load(QorString& tag, QorFile& file);
    /// Decoding BMP and PCX into a picture is not offered: reads nothing and returns 0.
    unsigned long Load(QorFile& file);

    /// True when src has this picture's colour type and it is one of the four.
    char IsValidPaste(const QorPicBlock& src) const;
    /// Pastes src's rectangle (inclusive corners) at (dx, dy). transparent skips src's mask colour, mirrorX
    /// and mirrorY read the rectangle right to left and bottom to top, clip fits the rectangles to both
    /// pictures first, subtract (16 bits only) clears destination bits set in the source and bit 15.
    /// Returns false only for mismatched or unsupported colour types.
    /// \note Pixels that fall outside this picture, or whose source lies outside src's pixels (mirrored
    ///       pastes can address such pixels), are skipped whatever the clip flag says.
    char Paste(const QorPicBlock& src, long dx, long dy, long sx1, long sy1, long sx2, long sy2, char transparent,
               char mirrorX, char mirrorY, char clip, char subtract);
    /// Pastes the whole of src at (dx, dy).
    char Paste(const QorPicBlock& src, long dx, long dy, char transparent, char mirrorX, char mirrorY, char clip,
               char subtract);
    char Paste(const QorPicBlock& src, Point<long> dest, Point<long> srcTopLeft, Point<long> srcBottomRight,
               char transparent, char mirrorX, char mirrorY, char clip, char subtract);
    /// The per-depth kernels: no validation, no clipping (beyond skipping pixels outside either picture).
    char Paste0808(const QorPicBlock& src, long dx, long dy, long sx1, long sy1, long sx2, long sy2,
                   char transparent, char mirrorX, char mirrorY, char clip, char subtract);
    char Paste1616(const QorPicBlock& src, long dx, long dy, long sx1, long sy1, long sx2, long sy2,
                   char transparent, char mirrorX, char mirrorY, char clip, char subtract);
    char Paste2424(const QorPicBlock& src, long dx, long dy, long sx1, long sy1, long sx2, long sy2,
                   char transparent, char mirrorX, char mirrorY, char clip, char subtract);
    char Paste3232(const QorPicBlock& src, long dx, long dy, long sx1, long sy1, long sx2, long sy2,
                   char transparent, char mirrorX, char mirrorY, char clip, char subtract);

    /// Fills the 4-connected region of pixels equal to pixel (x, y) with colour. When filled is given, the
    /// byte offset of every written pixel is appended (a pixel reached twice is listed twice).
    void FloodFill(long x, long y, const unsigned char* colour, Cycle<long>* filled);
    /// Fills the same region with pattern, tiled from the picture's top-left corner. A pattern of another
    /// colour type, or an empty one, changes nothing.
    void FloodFill(long x, long y, const QorPicBlock& pattern);
    /// Block mosaic of src into this picture: every bw x bh block takes its top-left source pixel.
    /// \note Nothing happens for a src of another colour type. Pixels that fall outside this picture are
    ///       skipped; bw = bh = 1 pastes the whole of src at the rectangle's corner (transparent, clipped).
    void SetMosiac(const QorPicBlock& src, long bw, long bh);
    void SetMosiac(const QorPicBlock& src, long bw, long bh, const QorRect& rect);
    void SetMosiac(const QorPicBlock& src, long bw, long bh, long x1, long y1, long x2, long y2);
    /// Builds the shuffled (destination offset, source offset) pairs of a dissolve of src's rectangle at
    /// (dx, dy) into a new[] array stored in *pairs for the caller to delete[]; returns their number.
    /// opaqueOnly leaves out source pixels equal to the mask colour. Mismatched depths give null and 0.
    /// \note Pixels the clip leaves outside this picture are left out. No pairs give null and 0, and then
    ///       rand() is not called.
    unsigned long GenerateRandomPasteArray(Point<long>** pairs, const QorPicBlock& src, long dx, long dy, long sx1,
                                           long sy1, long sx2, long sy2, char opaqueOnly);
    unsigned long GenerateRandomPasteArray(Point<long>** pairs, const QorPicBlock& src, Point<long> dest,
                                           Point<long> srcTopLeft, Point<long> srcBottomRight, char opaqueOnly);
    unsigned long GenerateRandomPasteArray(Point<long>** pairs, const QorPicBlock& src, long dx, long dy,
                                           char opaqueOnly);
    /// Copies the pixels of count pairs from src into this picture.
    /// \note A pair whose offset (plus the pixel's bytes) lies outside either picture's buffer is skipped.
    void RandomPaste(const QorPicBlock& src, const Point<long>* pairs, long count);

    /// This picture becomes src scaled to newWidth x newHeight (nearest neighbour); the palette pointer is kept.
    /// \note An empty src, a new side below 1 or a size Reset would refuse leaves this picture unchanged.
    void CreateZoom(const QorPicBlock& src, long newWidth, long newHeight);
    /// Scaling by factors is not offered: this picture is left unchanged.
    void CreateZoom(const QorPicBlock& src, double zoomX, double zoomY);
    /// This picture becomes src turned clockwise by degrees about its top-left pixel; uncovered pixels get
    /// the mask colour. An empty src, an angle that is not finite or a result Reset would refuse leaves
    /// this picture unchanged.
    void CreateRotate(const QorPicBlock& src, double degrees);
    /// This picture becomes src with a regular screen of pixels replaced by the mask colour; ratio (clamped
    /// to 0.1 .. 0.9) is the share of pixels kept.
    void CreateTransparent(const QorPicBlock& src, double ratio);
    /// Deforming is only declared: this picture is left unchanged.
    void CreateDeform(const QorPicBlock& src, Point<long> p1, Point<long> p2, Point<long> p3, Point<long> p4);
    void CreateDeform(const QorPicBlock& src, long x1, long y1, long x2, long y2, long x3, long y3, long x4, long y4);

    /// Renders one line of text into this picture: dc's font sets the size (bytes of text x the maximum
    /// character width by the character height), the glyphs take colour and the rest the mask colour. When
    /// colour equals the mask colour, the mask colour's first byte is raised by one first. Always true.
    /// \note dc should be a memory context: the text is drawn into a monochrome bitmap selected into it.
    ///       An attached picture keeps its size and takes what fits.
    char SetText(CDC* dc, const char* text, unsigned char* colour);
    /// Copies the picture's pixel bytes unchanged to (0, 0) of dc through a device-independent section,
    /// after selecting and realising palette when given. The last column and row are not drawn.
    void DrawToDC(CDC* dc, CPalette* palette);

protected:
    /// Orders the corners and clips them to this picture; true when any value changed.
    char AutoFitInRegion(long& x1, long& y1, long& x2, long& y2) const;
    /// Fits a paste of src's rectangle at (dx, dy) to both pictures, exactly as Paste's clip flag does.
    /// Always returns false.
    char AutoAlterCoordinate(const QorPicBlock& src, long& dx, long& dy, long& sx1, long& sy1, long& sx2,
                             long& sy2, char mirrorX, char mirrorY) const;
    /// Changes the colour type and gives the mask colour a zeroed buffer of the new width; the pixels are
    /// not touched. Returns the previous type.
    ColorType SetType(ColorType type);
    /// One pixel of srcType converted into this picture's type; false (dst untouched) where no conversion
    /// exists: into or out of 16 bits, into 8 bits from a deeper type, or from 8 bits without a palette.
    char TransferColor(unsigned char* dst, ColorType srcType, const unsigned char* src) const;
    /// Rows whose bytes lie inside the pixel buffer. Equal to the height except for an attached buffer
    /// whose type later changed to a wider one.
    long GetUsableRows() const;

private:
    void StdInit();
    /// Orders the corners and clips them to the rows the buffer holds; false when nothing is left.
    bool ClipToBuffer(long& x1, long& y1, long& x2, long& y2) const;
    char PasteRows(const QorPicBlock& src, int bpp, long dx, long dy, long sx1, long sy1, long sx2, long sy2,
                   char transparent, char mirrorX, char mirrorY, char subtract);
    bool Resize(long w, long h);
    void FreeData();
    unsigned long ReadPixels(QorFile& file, ColorType type, long w, long h, unsigned long header);

    char m_tag[4] = {'B', 'M', 'P', 'Q'};
    std::uint32_t m_version = 0x00010000;
    std::uint32_t m_reserved = 0;
    ColorType m_colorType = ColorType(0);
    bool m_attached = false;
    std::uint16_t m_bitsPerPixel = 0;
    std::uint16_t m_bytesPerPixel = 0;
    std::int32_t m_width = 0;
    std::int32_t m_height = 0;
    unsigned char* m_data = nullptr;
    unsigned char* m_mask = nullptr;
    stPaletteEntry* m_palette = nullptr;
    // Bytes the pixel buffer holds: GetSize() at allocation, or the attached size at Attach.
    unsigned long m_capacity = 0;
};

/// Reads a BMP file with a 12-byte core header: header into header, the pixel bytes (bottom row first,
/// rows padded to 4 bytes, colour table skipped) into a new[] buffer stored in bits for the caller to
/// delete[]. False, bits untouched, for an unreadable file, a wrong type word or header size, or sizes
/// the file cannot supply (including rows that would not fit in the pixel bytes).
QOR_API char LoadBMP(const char* path, BITMAPCOREHEADER* header, unsigned char** bits);
/// The same for a BMP file with a 40-byte information header.
QOR_API char LoadBMP(const char* path, BITMAPINFOHEADER* header, unsigned char** bits);
/// Turns the rows of bits (padded to 4 bytes) upside down; a height below 1 changes nothing.
/// \note bits must hold the rows that header describes, as LoadBMP's result does.
QOR_API void VerticalReverse(unsigned char* bits, BITMAPINFOHEADER* header);

/// Draws text top to bottom from (x, y), one character at a time, stepping by the font's character
/// height (upwards in mapping modes other than MM_TEXT). A byte of 0xA0 or more starts a two-byte
/// character. False only when the font metrics cannot be read.
QOR_API char VerticalTextOut(CDC* dc, int x, int y, const char* text);
QOR_API char VerticalTextOut(CDC* dc, int x, int y, const unsigned char* text);
QOR_API char VerticalTextOut(CDC* dc, int x, int y, const QorString& text);
/// Draws text bottom to top: the first character lowest, the last at y.
QOR_API char VerticalTextOutR(CDC* dc, int x, int y, const char* text);
QOR_API char VerticalTextOutR(CDC* dc, int x, int y, const unsigned char* text);
QOR_API char VerticalTextOutR(CDC* dc, int x, int y, const QorString& text);
