#pragma once

#include "QorSprite.h"
#include "qor/core.h"
#include "qor/files.h"
#include "qor/pictures.h"

#include <cstdint>

class CWnd;
class QorIntegration;

/// The description of a buffer's pixels handed to the platform: kept equal to the buffer's picture.
struct stBitmapDesc
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
/// and hands out QorGuider handles to them.
/// \note Every guider is checked against the registry before use: a null, removed or foreign guider is
///       refused (0, 255 or a null guider), never followed. Removal functions clear the caller's guider.
///       The compositor owns everything it creates and frees it all when destroyed.
class QorOffScreenBuffer
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

    /// Sets the system colour type (resetting the main picture to width x height when the type changes), the
    /// mode and the window, then sizes the main picture. Returns 0, changing nothing, for an unknown type.
    char Initialize(QorPicBlock::ColorType type, ShowingMode mode, long width, long height, CWnd* wnd);
    /// Deletes every picture of the registry whatever its use count. Children and sprites stay; a sprite
    /// that showed a deleted picture is left without one.
    void RestartSystem();
    void SetIntegrationPtr(QorIntegration* integration) { m_integration = integration; }
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
    /// Resizes the main picture to width x height in its colour type. 0 only without a main buffer; modes
    /// outside 0 to 8 change nothing.
    char AutoUpdateBitmap(long width, long height);

    // Guider checks: each walks the registry and compares both number and record, so a removed or foreign
    // guider finds nothing.
    PicRecord* FindPic(const QorGuider& pic);
    /// A registry picture or a buffer's surface.
    PicRecord* FindPicOrSurface(const QorGuider& pic);
    OffScrBuf* FindBuffer(const QorGuider& buffer);
    QorSprite* FindSpriteIn(OffScrBuf* buffer, const QorGuider& sprite);
    /// The sprite in any buffer; its buffer goes to *owner when owner is not null.
    QorSprite* FindSprite(const QorGuider& sprite, OffScrBuf** owner = nullptr);
    OffScrBuf* GetMainBuffer() { return static_cast<OffScrBuf*>(m_mainBuffer.object); }
    /// Keeps the bitmap description equal to the buffer's surface.
    static void RefreshBitmapInfo(OffScrBuf& buffer);

    QorGuider CreateSpriteIn(OffScrBuf* buffer, const QorGuider& pic, long z);
    /// A new main-buffer sprite at the nearest depth, entered in the nearest table; the table has room.
    QorGuider AddNearestSprite(const QorGuider& pic);
    char QuerySpriteFlag(const QorGuider& sprite, char (QorSprite::*flag)() const);
    char SetSpriteFlag(const QorGuider& sprite, void (QorSprite::*flag)(char), char on);
    /// Drops the sprite's picture (use count, private picture), forgets every pointer kept to the sprite and
    /// destroys it.
    void RemoveSpriteFrom(OffScrBuf* buffer, QorSprite* sprite);
    /// Leaves every sprite that shows picture without one, so that nothing keeps a deleted picture.
    void ForgetPicture(const QorPicBlock* picture);
    /// Gives child a new main-buffer sprite at depth z in place of the old one.
    char RenewChildSprite(OffScrBuf* child, long z, char alwaysOnTop);

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
};
