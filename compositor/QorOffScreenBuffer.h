#pragma once

#include "core/QorExport.h"

#include "QorSprite.h"
#include "qor/core.h"
#include "qor/files.h"
#include "qor/pictures.h"

#include <cstdint>
#include <memory>

class CWnd;
class QorIntegration;

/// The description of a buffer's pixels handed to the platform: kept equal to the buffer's picture.
struct QOR_API stBitmapDesc
{
    std::int32_t type = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;
    /// width x bytes per pixel: rows are not padded.
    std::int32_t widthBytes = 0;
    std::uint16_t planes = 1;
    std::uint16_t bitsPixel = 0;
    void* bits = nullptr;
};

/// The compositor: owns a registry of pictures, the child buffers (the main buffer first) and their sprites,
/// and hands out QorGuider handles to them; recomposes dirty rectangles from them, presents the main
/// buffer to the window in one of nine showing modes, keeps the 8-bit palette and runs timed effects.
/// \note Every guider is checked against the registry before use: a null, removed or foreign guider is
///       refused (0, 255 or a null guider), never followed. Removal functions clear the caller's guider.
///       The compositor owns everything it creates and frees it all when destroyed.
class QOR_API QorOffScreenBuffer
{
public:
    /// How the main picture is presented (the number is what matters: 0 to 8).
    enum ShowingMode : std::int32_t
    {
        kDeviceBitmap = 0,
        kDeviceBitmapStretchClient = 1,
        kDeviceBitmapStretchScreen = 2,
        kIndependent = 3,
        kIndependentStretchClient = 4,
        kIndependentStretchScreen = 5,
        kSection = 6,
        kSectionStretchClient = 7,
        kSectionStretchScreen = 8,
    };

    /// The timed effects a buffer can run (OnTimer steps them).
    enum SpecialEffect : std::int32_t
    {
        kNoEffect = 0,
        kRandomImage = 1,
        /// Has no step.
        kNoStepEffect = 2,
        /// Its step does nothing.
        kIdleEffect = 3,
        kFadeOutEffect = 4,
        kFadeInEffect = 5,
        kMosaicOutEffect = 6,
        kMosaicInEffect = 7,
    };

    /// How a presentation reaches QorIntegration::OnDrawToScreen(CDC*) without this layer knowing that
    /// class: the integration object installs a forwarder, which receives the pointer given to
    /// SetIntegrationPtr and the context to draw on (a memory context in modes 0-2 and 6-8, the window's
    /// context in modes 3-5).
    typedef char (*DrawHook)(QorIntegration* integration, CDC* dc);

    /// Depth limit and the depths of the main buffer's bands.
    enum : long
    {
        kMaxDepth = 1000000,
        kNearestDepth = 30,
        kOnTopChildDepth = 100,
        kChildDepth = 250,
    };

    /// A picture of the registry: its number, its pixels and how many sprites show it.
    struct PicRecord
    {
        explicit PicRecord(QorPicBlock::ColorType type) : picture(type) {}

        std::uint32_t id = 0;
        QorPicBlock picture;
        std::uint32_t useCount = 0;
    };

    /// A buffer: its own picture (the surface) and its own depth-ordered sprites. A child is shown in the main
    /// buffer through the main-buffer sprite that points at its surface.
    struct OffScrBuf
    {
        explicit OffScrBuf(QorPicBlock::ColorType type) : surface(type) { surface.useCount = 1; }
        OffScrBuf(const OffScrBuf&) = delete;
        OffScrBuf& operator=(const OffScrBuf&) = delete;
        ~OffScrBuf() { delete[] randomPoints; }

        std::uint32_t id = 0;
        /// Kept in decreasing depth; equal depths in creation order.
        Cycle<QorSprite> sprites;
        /// The surface in the form of a picture record (its id is the picture number taken at creation), so
        /// that a picture guider can name it.
        PicRecord surface;
        /// The main-buffer sprite that shows this buffer; null for the main buffer.
        QorSprite* sprite = nullptr;
        /// The shown part of the surface, inclusive.
        QorRect visibleRect;
        std::int32_t x = 0;
        std::int32_t y = 0;
        char hitTestable = 1;
        char alwaysOnTop = 0;
        char reserved = 1;
        /// The attached sprite while exactly one is attached, else null.
        QorSprite* attachedSprite = nullptr;
        std::uint32_t attachedCount = 0;
        std::int32_t effect = 0;
        std::uint32_t effectLength = 0;
        std::uint32_t effectProgress = 0;
        std::uint32_t effectState[3] = {};
        QorGuider effectPicture;
        QorGuider effectSprite;
        /// Owned point order of the random-image effect (new[]).
        Point<long>* randomPoints = nullptr;
        unsigned long randomPointCount = 0;
        QorOffScreenBuffer* owner = nullptr;
        stBitmapDesc bitmapInfo;
    };

    /// Makes the main buffer (640 x 480, 8-bit, all visible) and the auxiliary buffer, with the grey palette.
    QorOffScreenBuffer();
    QorOffScreenBuffer(const QorOffScreenBuffer&) = delete;
    QorOffScreenBuffer& operator=(const QorOffScreenBuffer&) = delete;
    virtual ~QorOffScreenBuffer();

    /// Sets the system colour type (resetting the main picture to width x height when the type changes, and
    /// setting the standard colour palette when it becomes 8-bit), the mode and the window, then prepares
    /// the main picture for the mode (AutoUpdateBitmap). Returns 0, changing nothing, for an unknown type.
    /// \note In modes 6-8 the main picture's pixels belong to a section made on the window's context; the
    ///       window must outlive the compositor or the next Initialize.
    char Initialize(QorPicBlock::ColorType type, ShowingMode mode, long width, long height, CWnd* wnd);
    /// Deletes every picture of the registry whatever its use count. Children and sprites stay; a sprite
    /// that showed a deleted picture is left without one.
    void RestartSystem();
    void SetIntegrationPtr(QorIntegration* integration) { m_integration = integration; }
    /// The forwarder every presentation calls, with the integration pointer, when both are set.
    void SetDrawHook(DrawHook hook) { m_drawHook = hook; }
    QorPicBlock* GetMainBufferPicBlockPtr();
    /// The main buffer's visible rectangle.
    QorRect GetVisibleRect();
    /// The main picture's colour type.
    QorPicBlock::ColorType GetSystemColorType();
    /// Sets the main buffer's visible rectangle and moves its attached sprites by the change of its
    /// left-top corner. Returns 1.
    char SetMainVisibleRect(const QorRect& rect);
    /// Resizes the main picture (contents lost). Returns 0 only without a main buffer.
    char SetMainBufferSize(long width, long height);

    /// Pictures in the registry.
    unsigned long GetPicNum();
    /// Sprites of the main buffer.
    unsigned long GetSpriteNum();
    /// Sprites of child; 0 for an unknown child.
    unsigned long GetSpriteNum(const QorGuider& child);
    /// Sprites of all buffers together.
    unsigned long GetTotalSpriteNum();

    // Every CreatePic makes a new empty record first and returns its guider even when filling it fails;
    // only allocation failure gives a null guider. A source guider may name a registry picture or a child's
    // surface; a null or unknown source leaves the new picture empty.

    /// A copy of the whole source picture.
    QorGuider CreatePic(const QorGuider& pic);
    /// A copy of the inclusive rectangle of the source (the corners are taken as given).
    QorGuider CreatePic(const QorGuider& pic, long l, long t, long r, long b);
    /// The source scaled to width x height.
    QorGuider CreatePicZoom(const QorGuider& pic, long width, long height);
    /// The source turned clockwise by degrees.
    QorGuider CreatePicRotate(const QorGuider& pic, double degrees);
    /// The source with a screen of mask-coloured pixels; ratio is the share kept.
    QorGuider CreatePicTransparent(const QorGuider& pic, double ratio);
    /// A QBM picture read from the file's current position.
    QorGuider CreatePic(QorFile& file);
    /// A picture read in the format name gives: a name with an extension by that extension (.qbm, .qgb,
    /// .bmp, .pcx, any case), a name without one as the format tag itself ("BMPQ", "QGB ", "FIX  ...").
    QorGuider CreatePic(QorString& name, QorFile& file);
    /// Seeks the file (QorFile::Seek with the three values), then reads a QBM picture.
    QorGuider CreatePic(QorFile& file, unsigned long offset, int origin, char direction);
    /// Seeks the file, then reads by name as CreatePic(name, file).
    QorGuider CreatePic(QorString& name, QorFile& file, unsigned long offset, int origin, char direction);
    /// The group's picture of that name.
    QorGuider CreatePic(QorPicGroup& group, const char* name);
    /// The group's picture at index.
    QorGuider CreatePic(QorPicGroup& group, long index);
    /// A copy of a picture the program made (pixels, type, mask colour; an 8-bit picture's palette
    /// pointer is shared, so that palette must outlive the copy's use).
    QorGuider CreatePic(const QorPicBlock& picture);
    /// A copy of the main buffer's picture.
    QorGuider CreatePicFromScreen();
    QorGuider CreatePicFromScreen(long l, long t, long r, long b);
    QorGuider CreatePicFromScreen(const QorRect& rect);
    /// A copy of a child's picture.
    QorGuider CreatePicFromChild(const QorGuider& child);
    QorGuider CreatePicFromChild(const QorGuider& child, long l, long t, long r, long b);
    QorGuider CreatePicFromChild(const QorGuider& child, const QorRect& rect);
    /// Deletes a registry picture and clears pic. Returns 0, changing nothing, for an unknown picture or one
    /// that a sprite still shows.
    char RemovePic(QorGuider& pic);
    /// Width of the picture pic names (a registry picture or a child's surface); 0 for an unknown one.
    long GetPicWidth(const QorGuider& pic);
    long GetPicHeight(const QorGuider& pic);

    /// A new child with an empty surface, shown by a main-buffer sprite at depth 250 over the children made
    /// before it. Null guider on allocation failure.
    QorGuider CreateChild();
    /// A new child with a width x height surface, all of it visible.
    QorGuider CreateChild(long width, long height);
    /// Removes the child's main-buffer sprite, then the child with its sprites and surface, and clears child.
    /// \note The main and the auxiliary buffer are never removed: 0.
    char RemoveChild(QorGuider& child);
    /// Places the child's sprite at (x, y) in the main buffer (its last position keeps the old one). The
    /// child's own attached sprites do not move.
    char MoveChild(const QorGuider& child, long x, long y);
    /// Sets the shown part of the child's surface and moves its attached sprites by the change of the
    /// rectangle's left-top corner. The corners are ordered first.
    char SetChildVisibleRect(const QorGuider& child, const QorRect& rect);
    char SetChildVisibleRect(const QorGuider& child, long l, long t, long r, long b);
    /// Resets the child's surface to width x height in the system colour type (contents lost).
    char SetChildBufferSize(const QorGuider& child, long width, long height);
    /// Show flag of the child's sprite; 0 for a child without one.
    char SetChildVisible(const QorGuider& child, char on);
    /// Mask flag of the child's sprite; 0 for a child without one.
    char SetChildMask(const QorGuider& child, char on);
    /// Moves the child into the upper band (depth 100) or back (250) by giving it a new sprite at its place.
    /// \note The new sprite has a new number and default flags: never keep the guider of a child's sprite.
    char SetChildAlwaysOnTop(const QorGuider& child, char on);
    /// Brings the child over the other children of its band by giving it a new sprite at its place.
    char SetFocus(const QorGuider& child);
    /// The child's visible rectangle; all zero for an unknown child.
    QorRect GetChildVisibleRect(const QorGuider& child);
    /// The child's surface; null for an unknown child.
    QorPicBlock* GetChildPicBlockPtr(const QorGuider& child);

    // Every sprite operation has a main-buffer form and a form that names the child first. Creation and
    // removal work in that buffer; the other operations act on the sprite wherever it lives and do not
    // consult the child guider.

    /// A new sprite at depth z (at most 1000000) in the main buffer, after every sprite of the same depth. A
    /// null picture guider gives a sprite without a picture. Null guider for an unknown picture or child.
    QorGuider CreateSprite(const QorGuider& pic, long z);
    QorGuider CreateSprite(const QorGuider& child, const QorGuider& pic, long z);
    /// Removes the sprite from the buffer (0 when it is not there), drops its picture's use count, deletes
    /// its private picture, and clears sprite.
    char RemoveSprite(QorGuider& sprite);
    char RemoveSprite(const QorGuider& child, QorGuider& sprite);
    /// Moves the sprite; its last area becomes its old position with its current size. Nothing is redrawn.
    char MoveSprite(const QorGuider& sprite, long x, long y);
    char MoveSprite(const QorGuider& child, const QorGuider& sprite, long x, long y);
    /// The sprite's position; (0, 0) for an unknown sprite.
    Point<long> GetSpriteCoordinate(const QorGuider& sprite);
    Point<long> GetSpriteCoordinate(const QorGuider& child, const QorGuider& sprite);
    /// Shows pic (nothing for a null guider) instead of the sprite's picture, moving the use counts; a
    /// private old picture is deleted. 0 for an unknown sprite or picture and for a child's sprite.
    char ChangePicBlock(const QorGuider& sprite, const QorGuider& pic);
    char ChangePicBlock(const QorGuider& child, const QorGuider& sprite, const QorGuider& pic);
    /// MoveSprite(sprite, x, y) followed by ChangePicBlock(sprite, pic), finding the sprite once: the step
    /// of an animation. The sprite's area before the move and after the change go to before and after when
    /// they are not null. 0 for an unknown sprite (nothing done) or when the change is refused (the move
    /// stands).
    char StepSprite(const QorGuider& sprite, long x, long y, const QorGuider& pic, QorRect* before, QorRect* after);

    /// Flag queries: the flag, or 0 for an unknown sprite.
    char IsRegionCheck(const QorGuider& sprite);
    char IsRegionCheck(const QorGuider& child, const QorGuider& sprite);
    char IsColorReverse(const QorGuider& sprite);
    char IsColorReverse(const QorGuider& child, const QorGuider& sprite);
    char IsSpriteVisible(const QorGuider& sprite);
    char IsSpriteVisible(const QorGuider& child, const QorGuider& sprite);
    char IsMask(const QorGuider& sprite);
    char IsMask(const QorGuider& child, const QorGuider& sprite);
    char IsHReverse(const QorGuider& sprite);
    char IsHReverse(const QorGuider& child, const QorGuider& sprite);
    char IsVReverse(const QorGuider& sprite);
    char IsVReverse(const QorGuider& child, const QorGuider& sprite);
    char IsAttachToWindow(const QorGuider& sprite);
    char IsAttachToWindow(const QorGuider& child, const QorGuider& sprite);
    /// Flag setters: 1, or 0 for an unknown sprite.
    char SetRegionCheck(const QorGuider& sprite, char on);
    char SetRegionCheck(const QorGuider& child, const QorGuider& sprite, char on);
    char SetColorReverse(const QorGuider& sprite, char on);
    char SetColorReverse(const QorGuider& child, const QorGuider& sprite, char on);
    char SetSpriteVisible(const QorGuider& sprite, char on);
    char SetSpriteVisible(const QorGuider& child, const QorGuider& sprite, char on);
    char SetMask(const QorGuider& sprite, char on);
    char SetMask(const QorGuider& child, const QorGuider& sprite, char on);
    char SetHReverse(const QorGuider& sprite, char on);
    char SetHReverse(const QorGuider& child, const QorGuider& sprite, char on);
    char SetVReverse(const QorGuider& sprite, char on);
    char SetVReverse(const QorGuider& child, const QorGuider& sprite, char on);
    /// Show and Mask both take show; mask is ignored; HReverse and VReverse take the last two.
    char SetAttributes(const QorGuider& sprite, char show, char mask, char hReverse, char vReverse);
    char SetAttributes(const QorGuider& child, const QorGuider& sprite, char show, char mask, char hReverse,
                       char vReverse);
    /// Writes the sprite's current area (inclusive) into r. 0 for an unknown sprite or a null r.
    char ReceiveSpriteRect(const QorGuider& sprite, QorRect* r);
    char ReceiveSpriteRect(const QorGuider& child, const QorGuider& sprite, QorRect* r);
    /// Attaches the sprite to the window (it then follows the buffer's visible rectangle) or detaches it,
    /// keeping the buffer's count of attached sprites. 0 when the sprite is not in that buffer.
    char SetAttachToWindow(const QorGuider& sprite, char on);
    char SetAttachToWindow(const QorGuider& child, const QorGuider& sprite, char on);

    /// A main-buffer sprite without a picture at depth 30 while the nearest table has room; when it is full,
    /// its last entry.
    QorGuider CreateNearestSprite();
    /// The same with pic; when the table is full its last entry is given pic.
    QorGuider CreateNearestSprite(const QorGuider& pic);
    /// Removes a sprite of the nearest table and its entry, and clears sprite. 0 when it is not an entry.
    char RemoveNearestSprite(QorGuider& sprite);

    /// Whether (x, y) hits the sprite: 255 for an unknown sprite (unsigned, so it compares as 255), 0 for a
    /// hidden one or, unless anywhere is set, for a point outside the main buffer's visible rectangle.
    unsigned char CheckCollision(const QorGuider& sprite, long x, long y, char exact, char anywhere);
    /// Whether sprite2's top-left corner, moved by (dx, dy) and carried into child1's coordinates, hits
    /// sprite1. Within one child (equal guiders) the corner is taken as it is, without dx and dy. Show flags
    /// are not consulted. 255 for an unknown sprite or child.
    unsigned char CheckCollision(const QorGuider& child1, const QorGuider& sprite1, const QorGuider& child2,
                                 const QorGuider& sprite2, long dx, long dy, char exact, char anywhere);
    /// The topmost shown ordinary sprite of the main buffer under (x, y); null guider when none.
    QorGuider FindFirstCollisionSprite(long x, long y, char exact, char anywhere);
    /// Always a null guider: children are not searched.
    QorGuider FindFirstCollisionSprite(const QorGuider& child, long x, long y, char exact, char anywhere);
    /// The topmost hit-testable child under (x, y), hidden ones included.
    /// \note The point is tested against the child's surface at its sprite's place, then against the child's
    ///       visible rectangle as given (unshifted): the two agree while the child's sprite stands at 0, 0.
    QorGuider FindFirstCollisionChild(long x, long y, char exact);

    // Redraw. A region is recomposed from the buffer's background (its picture's mask colour) and its
    // sprites in list order; nothing is redrawn unless asked.

    /// Recomposes the rectangle (corners in any order) of the child's picture, clipped to its visible
    /// rectangle and picture. With recurse, children shown by sprites in the region are recomposed first.
    /// 0 for an unknown child.
    /// \note A rectangle wholly left of or above the visible rectangle is not rejected: clipping turns it
    ///       inside out, the background fill orders the corners again and no sprite is pasted.
    char Redraw(const QorGuider& child, long l, long t, long r, long b, char recurse);
    char Redraw(const QorGuider& child, const QorRect& rect, char recurse);
    /// The child's visible rectangle shifted by its sprite's position in the main buffer (the two agree
    /// while that sprite stands at 0, 0).
    char Redraw(const QorGuider& child, char recurse);
    /// Recomposes the rectangle of the main buffer, then presents when present is set.
    char Redraw(long l, long t, long r, long b, char recurse, char present);
    char Redraw(const QorRect& rect, char recurse, char present);
    /// Recomposes the main buffer's visible rectangle, then presents when present is set.
    char Redraw(char recurse, char present);
    /// Repaints what a main-buffer sprite covers now and covered before: one union rectangle when the two
    /// overlap (presented as such), else the two areas apart and a presentation of the whole screen.
    /// 0 when the sprite is not in the main buffer.
    char RedrawSprite(const QorGuider& sprite, char present);
    /// Repaints the union of a child sprite's two areas in the child; with toMain, also that union moved
    /// by the child's sprite position in the main buffer, presenting it (twice with present). Without
    /// toMain nothing is presented.
    char RedrawSprite(const QorGuider& child, const QorGuider& sprite, char toMain, char present);
    /// Recomposes the child's visible rectangle with its nested children; with toMain, UpdateChildToMain.
    char RedrawChild(const QorGuider& child, char toMain);
    /// Recomposes the child's place in the main buffer (its visible rectangle moved by its sprite's
    /// position) and presents it.
    char UpdateChildToMain(const QorGuider& child);

    // Presentation of the main picture's visible rectangle in the showing mode.

    /// Presents at (x, y) of the window (modes 0, 3, 6) or stretched over the client area (1, 4, 7) or the
    /// screen size (2, 5, 8), calling the draw hook. Without a window, a "NULL WND" message box instead.
    void DrawToScreen(long x, long y);
    /// The same check, then the whole visible rectangle through DrawToScreen(0, 0): the rectangle is
    /// accepted and deliberately not used to limit the transfer.
    void DrawToScreen(long l, long t, long r, long b);
    /// Modes 0 and 6 only: the picture from its (0, 0) corner, centred in the client area, without the
    /// hook. Other modes draw nothing.
    void DrawToScreenCenter();
    /// As DrawToScreen(x, y) onto dc; modes 6-8 draw as 3-5 (from the pixels and the bitmap header).
    /// Stretching modes use the window's client area, or the visible size without a window.
    void DrawToDC(CDC* dc, long x, long y);
    /// Stretches (sx, sy, sw, sh) of the main picture to (dx, dy, dw, dh) of dc with the compositor's
    /// palette realised there, calling the hook on the memory context (modes 0-2) or on dc (3-8).
    void DrawToDC(CDC* dc, long dx, long dy, long dw, long dh, long sx, long sy, long sw, long sh);
    /// The effects' unit of time: every step adds it to the effect's progress (100 unless set).
    void SetTimerClick(unsigned long click) { m_timerClick = static_cast<std::uint32_t>(click); }
    /// Blacks out palette entries 10-245 (the others zero) on the device side; the stored palette stays,
    /// so TurnScreenOn rebuilds the display from it. Both show only where the palette drives the display.
    void TurnScreenOff();
    void TurnScreenOn();
    /// One step of every buffer's effect, in list order. 0 at once when no effect runs, else 1.
    char OnTimer();

    // Palettes: 256 stored entries; the library's colours live in entries 10-245.

    /// The system palette (read through the window's context) with entries 10-225 set to the 216 colours
    /// of the 6 x 6 x 6 cube, starting at cube colour 10 and wrapping; then applied.
    void SetStdColorPalette();
    /// Entry i becomes (i, i, i) for all 256 entries; then applied.
    void SetStdGreyPalette();
    /// Copies 256 entries into the stored palette and applies them.
    void SetPalette(const stPaletteEntry* entries);
    /// The logical palette realised at every presentation.
    CPalette* GetPalettePtr() { return &m_logicalPalette; }
    /// The stored palette (256 entries).
    const stPaletteEntry* GetPaletteEntries() const { return m_palette; }

    // Effects. Time counts in timer clicks: every step adds the click to the progress, and the effect
    // ends with the step whose progress passes the length. A buffer other than the main one is copied to
    // the screen after each step. Starting an effect on a buffer that runs one returns 0.

    /// Starts effect on the child with length; 0 when the child is unknown or already runs an effect.
    char SetChildSpecialEffect(const QorGuider& child, SpecialEffect effect, unsigned long length);
    /// Dissolves the sprite's picture, at the sprite's place, into the child's picture in random order,
    /// N / (length / click) points a step (the remainder is never pasted). opaqueOnly leaves out the
    /// picture's mask colour. 0 for an unknown child or sprite, a running effect, a click of 0 or a length
    /// shorter than one click.
    char PutImageRandomly(const QorGuider& child, unsigned long length, const QorGuider& sprite, char opaqueOnly);
    char PutImageRandomly(unsigned long length, const QorGuider& sprite, char opaqueOnly);
    /// Mosaic of a snapshot of the child's visible rectangle from cells of the larger of a and b down to
    /// the smaller. The snapshot stays in the registry.
    char MosiacIn(const QorGuider& child, unsigned long length, unsigned long a, unsigned long b);
    char MosiacIn(unsigned long length, unsigned long a, unsigned long b);
    /// The same from the smaller cells up to the larger.
    char MosiacOut(const QorGuider& child, unsigned long length, unsigned long a, unsigned long b);
    char MosiacOut(unsigned long length, unsigned long a, unsigned long b);
    /// Palette fades of entries 10-245 on the main buffer: from black to the stored colours, and back.
    char FadeIn(unsigned long length);
    char FadeOut(unsigned long length);
    /// Not offered for other buffers: 0.
    char FadeIn(const QorGuider& child, unsigned long length);
    /// Not offered: 0.
    char Gray(long l, long t, long r, long b);
    char Gray(const QorGuider& child, long l, long t, long r, long b);

    // Text sprites. The first text operation on a sprite gives it a picture of its own in the registry,
    // removed with the sprite; later ones reuse it. Colours are bytes in the picture's pixel layout; the
    // default text and mask colours are 0xFF bytes. Nothing is redrawn. 0 only for an unknown sprite.

    /// Renders one line of Big5 text with the default font.
    char SetText(const QorGuider& sprite, const char* text);
    char SetText(const QorGuider& sprite, const char* text, const unsigned char* color);
    char SetText(const QorGuider& sprite, const char* text, const unsigned char* color, const unsigned char* mask);
    /// With font selected while rendering (null: the default).
    char SetText(const QorGuider& sprite, const char* text, const unsigned char* color, CFont* font);
    char SetText(const QorGuider& sprite, const char* text, const unsigned char* color, const unsigned char* mask,
                 CFont* font);
    /// With a font made for the call from the face name (Big5) and the sizes and styles given.
    char SetText(const QorGuider& sprite, const char* text, const unsigned char* color, const char* face, int height,
                 int width, int weight, char italic, char underline, char strikeOut);
    /// Copies the whole of picture (a registry picture or a child's surface) instead of drawing text.
    char SetText(const QorGuider& sprite, const QorGuider& picture);

protected:
    /// A new empty record (system colour type, use count 0) appended to the registry. Null guider on
    /// allocation failure, with the list's error code set.
    QorGuider CreateNewPic();
    /// A new buffer with the next buffer and picture numbers and an empty surface of type, appended to the
    /// children. Null guider on allocation failure.
    QorGuider CreateBuffer(QorPicBlock::ColorType type);
    /// Whether child names a buffer of this compositor.
    char IsChildExist(const QorGuider& child);
    /// The main-buffer sprite of child; null for an unknown child or one without a sprite.
    QorSprite* GetCorrespondingSprite(const QorGuider& child);
    /// Moves the buffer's attached sprites by (dx, dy): the one cached sprite, or with two or more attached,
    /// every sprite whose AttachToWindow flag is set.
    void MoveAttachedSprites(OffScrBuf* buffer, long dx, long dy);
    /// Prepares the main picture for the mode at width x height: a plain picture in modes 0-5, a picture on
    /// a device-independent section of the window's context in modes 6-8. Updates the bitmap header. 0
    /// only without a main buffer; modes outside 0 to 8 change nothing.
    char AutoUpdateBitmap(long width, long height);
    /// Releases the presentation objects of modes 6-8: the window context (its palette restored), the
    /// memory context (its bitmap restored) and the section.
    void DestroyOSDependent();
    /// Gives a main picture left on a released section pixels of its own, width x height.
    void OwnMainPixels(long width, long height);
    /// Applies 256 entries to the device objects, not to the stored palette: modes 0-2 set the logical
    /// palette's entries 0-235 from entries 10-245; modes 3-5 set all 256 and the header's colour table;
    /// modes 6-8 change nothing.
    void SetPaletteActually(const stPaletteEntry* entries);
    /// Ends the buffer's effect when its progress has passed its length.
    void CheckSpecialEffectTimeMargin(OffScrBuf* buffer);
    // The effect steps; each takes the buffer's guider.
    char DoingRandomlyImage(const QorGuider& buffer);
    char DoingMosiacIn(const QorGuider& buffer);
    char DoingMosiacOut(const QorGuider& buffer);
    char DoingFadeIn(const QorGuider& buffer);
    char DoingFadeOut(const QorGuider& buffer);

    // Guider checks: each walks the registry and compares both number and record, so a removed or foreign
    // guider finds nothing.
    PicRecord* FindPic(const QorGuider& pic);
    /// A registry picture or a buffer's surface.
    PicRecord* FindPicOrSurface(const QorGuider& pic);
    OffScrBuf* FindBuffer(const QorGuider& buffer);
    QorSprite* FindSpriteIn(OffScrBuf* buffer, const QorGuider& sprite);
    /// The sprite in any buffer; its buffer goes to *owner when owner is not null.
    QorSprite* FindSprite(const QorGuider& sprite, OffScrBuf** owner = nullptr);
    /// Every removal of a sprite, picture or buffer calls it: what the lookup memo holds may be gone.
    void ForgetLookups() { ++m_removals; }
    OffScrBuf* GetMainBuffer() { return static_cast<OffScrBuf*>(m_mainBuffer.object); }
    /// Keeps the bitmap description equal to the buffer's surface.
    static void RefreshBitmapInfo(OffScrBuf& buffer);

    QorGuider CreateSpriteIn(OffScrBuf* buffer, const QorGuider& pic, long z);
    /// A new main-buffer sprite at the nearest depth, entered in the nearest table; the table has room.
    QorGuider AddNearestSprite(const QorGuider& pic);
    char QuerySpriteFlag(const QorGuider& sprite, char (QorSprite::*flag)() const);
    char SetSpriteFlag(const QorGuider& sprite, void (QorSprite::*flag)(char), char on);
    /// ChangePicBlock on a sprite already found (null: 0).
    char ChangePicBlockOf(QorSprite* sprite, const QorGuider& pic);
    /// Drops the sprite's picture (use count, private picture), forgets every pointer kept to the sprite and
    /// destroys it.
    void RemoveSpriteFrom(OffScrBuf* buffer, QorSprite* sprite);
    /// Leaves every sprite that shows picture without one, so that nothing keeps a deleted picture.
    void ForgetPicture(const QorPicBlock* picture);
    /// Gives child a new main-buffer sprite at depth z in place of the old one.
    char RenewChildSprite(OffScrBuf* child, long z, char alwaysOnTop);

    /// The core redraw of buffer over (l, t, r, b); depth counts the nesting of children.
    void RedrawBuffer(OffScrBuf* buffer, long l, long t, long r, long b, char recurse, int depth);
    /// The buffer whose surface picture is, or null.
    OffScrBuf* FindBufferBySurface(const QorPicBlock* picture);
    /// Calls the draw hook on dc when both the hook and the integration pointer are set.
    void CallDrawHook(CDC* dc);
    /// The header of the device-independent transfers, as the platform takes it.
    const BITMAPINFO* GetBitmapHeader() const { return reinterpret_cast<const BITMAPINFO*>(&m_bitmapHeader); }
    /// Sets the header's size fields for a width x height main picture of its current depth.
    void UpdateBitmapHeader(long width, long height);
    /// The main picture's pixels laid out as the header describes them (rows padded to 4 bytes): the
    /// pixels themselves when no padding is needed, else a copy.
    const void* GetDeviceIndependentBits();
    /// buffer grown to at least size bytes (capacity kept in capacity); null when there is no room.
    static unsigned char* Grow(std::unique_ptr<unsigned char[]>& buffer, unsigned long& capacity, unsigned long size);
    /// Presents through a device-dependent bitmap of the main picture (modes 0-2) onto dc: 1:1 at (x, y)
    /// or stretched to (x, y, w, h) when stretch is set; the hook draws on the memory context.
    void PresentDeviceBitmap(CDC& dc, long x, long y, long w, long h, char stretch);
    /// The 8-bit main picture's pixels turned into 32-bit ones (blue, green, red, 0) through colours, with
    /// the header that describes them in header32; null when there is no room.

    /// Presents the pixels with the header (modes 3-5 and DrawToDC's 6-8) onto dc, then calls the hook on dc.
    void PresentIndependent(CDC& dc, long x, long y, long w, long h, char stretch);
    /// The destination size of a stretching mode: the client area (modes 1, 4, 7), the screen (2, 5, 8), or
    /// the visible size.
    void GetStretchSize(long& width, long& height);
    /// Starts a mosaic effect with first and second cell sizes and a snapshot of the child's visible part.
    char StartMosaic(const QorGuider& child, SpecialEffect effect, unsigned long length, unsigned long first,
                     unsigned long second);
    /// The shared mosaic and fade steps.
    char DoingMosaic(const QorGuider& buffer);
    char DoingFade(const QorGuider& buffer, bool fadeIn);
    /// Gives the sprite its private registry picture when it has none; the sprite's own registry picture
    /// (null when it shows none, as a child's sprite does).
    QorPicBlock* PrepareTextPicture(QorSprite* sprite, const QorGuider& guider);

    Cycle<PicRecord*> m_pictures;
    Cycle<OffScrBuf*> m_children;
    QorGuider m_mainBuffer;
    std::uint32_t m_nearestCapacity = 1;
    std::uint32_t m_nearestCount = 0;
    QorGuider* m_nearestSprites = nullptr;
    std::uint32_t m_timerClick = 100;
    std::uint32_t m_activeEffects = 0;
    QorGuider m_auxBuffer;
    std::uint32_t m_nextPictureId = 1;
    std::uint32_t m_nextSpriteId = 1;
    std::uint32_t m_nextBufferId = 1;
    stPaletteEntry m_palette[256];
    QorIntegration* m_integration = nullptr;
    ShowingMode m_showingMode = kDeviceBitmap;
    CWnd* m_wnd = nullptr;

    /// The header of the device-independent transfers with its 256-entry colour table.
    struct stBitmapHeader
    {
        BITMAPINFOHEADER bmiHeader;
        RGBQUAD bmiColors[256];
    };
    stBitmapHeader m_bitmapHeader = {};
    CPalette m_logicalPalette;
    DrawHook m_drawHook = nullptr;
    // Modes 6-8: the window's context with the palette selected, and the memory context holding the section
    // the main picture lives in.
    HDC m_windowDC = nullptr;
    HWND m_windowDCOwner = nullptr;
    HPALETTE m_previousPalette = nullptr;
    HDC m_sectionDC = nullptr;
    HGDIOBJ m_previousBitmap = nullptr;
    HBITMAP m_section = nullptr;
    // A memo of guiders found by FindSprite and FindPicOrSurface, so that code stepping the same sprites
    // every tick (animations) does not walk the lists each time. A slot names a record by number and
    // address and is trusted only while nothing has been removed since it was filled: a removal moves
    // m_removals on, and a slot of an older count is ignored, so no slot can name a freed record.
    struct stLookupSlot
    {
        const void* object = nullptr;
        std::uint32_t identifier = 0;
        std::uint64_t removals = 0;
        OffScrBuf* owner = nullptr;
    };
    enum : std::size_t
    {
        kLookupSlots = 512,
    };
    /// Slots by number: numbers are handed out in turn, so records made together never share a slot.
    static std::size_t LookupSlot(std::uint32_t identifier) { return identifier & (kLookupSlots - 1); }
    std::unique_ptr<stLookupSlot[]> m_spriteLookups;
    std::unique_ptr<stLookupSlot[]> m_picLookups;
    std::uint64_t m_removals = 1;
    /// Rows padded for the device-independent transfers of pictures whose rows are not a multiple of 4 bytes.
    std::unique_ptr<unsigned char[]> m_paddedBits;
    unsigned long m_paddedSize = 0;
};
