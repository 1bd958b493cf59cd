#pragma once

#include "core/QorExport.h"
#include "qor/compositor.h"
#include "qor/core.h"
#include "qor/files.h"
#include "qor/pictures.h"

#include <cstdint>
#include <memory>
#include <vector>

/// An animation set file: a pool of QGB pictures and named units, each a sequence of frames (a pool picture
/// and an offset). Open reads the header and the unit headers; frames and pictures are read when an
/// animation of the unit is created, and pictures are shared between the running animations by use counts.
/// \note The set is untrusted input: every count, offset and picture index is checked against the file
///       before anything is allocated or followed. The compositor given to SetOffScreenBufferPtr must outlive
///       the set (or be replaced first): closing the set removes its sprites and pictures from it.
class QOR_API QorAnimSet : public QorObj
{
public:
    /// How much Open reads at once.
    enum OpenFlag : std::int32_t
    {
        /// The flag stored in the file.
        kFileDefault = 0,
        /// Every unit with its frames.
        kReadAll = 1,
        /// Only the unit headers, each at its offset.
        kReadHeaders = 2,
    };

    enum : unsigned long
    {
        /// The bytes 0x00 'S' 'A' 'Q' read as one little-endian value.
        kMagic = 0x51415300,
        kVersion = 0x10000,
        kNameSize = 31,
        /// Name, mode, x, y, depth and the frame count.
        kUnitHeaderSize = kNameSize + 4 * 5,
        /// Magic, version, the kept value, default flag and three reserved values.
        kHeaderSize = 28,
        kUnreadDepth = 500000,
    };

    class QorAnimUnit;
    class QorAnimUnitRun;

    /// One named animation of the set: its header and, once loaded, its three frame tables.
    class QOR_API QorAnimUnit
    {
    public:
        QorAnimUnit() = default;
        QorAnimUnit(const QorAnimUnit&) = delete;
        QorAnimUnit& operator=(const QorAnimUnit&) = delete;
        ~QorAnimUnit() { Destroy(); }

        /// Reads name, mode, x, y and depth from the stream's position. 0, changing nothing, when fewer bytes
        /// than a unit header (with its frame count) are left.
        char Create(QorFile& file);
        /// Reads the frame count and the three frame tables when the unit has no frames yet (1 without reading
        /// when it has). 0, the unit left without frames, when the tables run past the file or a frame names a
        /// picture outside the owner's pool.
        char Load(QorFile& file);
        /// Frees the frame tables; the frame count becomes 0.
        void Destroy();

        const char* GetName() const { return m_name; }
        long GetMode() const { return m_mode; }
        long GetX() const { return m_x; }
        long GetY() const { return m_y; }
        long GetDepth() const { return m_depth; }
        unsigned long GetFrameCount() const { return m_frameCount; }
        /// Frame i's pool index and offsets; 0 outside the tables.
        unsigned long GetFramePic(unsigned long i) const { return i < m_frameCount ? m_pics[i] : 0; }
        long GetFrameX(unsigned long i) const { return i < m_frameCount ? m_xs[i] : 0; }
        long GetFrameY(unsigned long i) const { return i < m_frameCount ? m_ys[i] : 0; }
        char IsResident() const { return m_resident; }
        void SetResident(char resident) { m_resident = resident; }
        QorAnimSet* GetOwner() const { return m_owner; }
        void SetOwner(QorAnimSet* owner) { m_owner = owner; }

    protected:
        char m_name[kNameSize] = {};
        std::int32_t m_mode = 0;
        std::int32_t m_x = 0;
        std::int32_t m_y = 0;
        std::int32_t m_depth = kUnreadDepth;
        std::uint32_t m_frameCount = 0;
        std::unique_ptr<std::uint32_t[]> m_pics;
        std::unique_ptr<std::int32_t[]> m_xs;
        std::unique_ptr<std::int32_t[]> m_ys;
        /// While 0, the frames are dropped with the unit's last animation and read again with the next.
        char m_resident = 0;
        QorAnimSet* m_owner = nullptr;
    };

    /// One running instance of a unit: a sprite whose picture and place follow the unit's frames.
    class QOR_API QorAnimUnitRun
    {
    public:
        QorAnimUnitRun() = default;
        /// Copies every field; the copy has a frame array of its own.
        QorAnimUnitRun(const QorAnimUnitRun& other) { *this = other; }
        QorAnimUnitRun& operator=(const QorAnimUnitRun& other);
        ~QorAnimUnitRun() = default;

        /// Frees the frame array and zeroes the frame index, the two bytes, the origin and the unit.
        void Reset();
        /// One animation step. 0xFF when neither running nor finished (or for a mode other than 0 and 1), 0
        /// when the animation stops or reports its end (changed gets the sprite's rectangle), 1 after showing
        /// the next frame (changed gets the union of the old and new rectangles). changed may be null.
        unsigned char TimerClick(QorRect* changed);

        unsigned long GetFrameIndex() const { return m_frameIndex; }
        char IsFinished() const { return m_finished; }
        char IsRunning() const { return m_running; }
        long GetOriginX() const { return m_originX; }
        long GetOriginY() const { return m_originY; }
        QorAnimUnit* GetUnit() const { return m_unit; }
        unsigned long GetFrameCount() const { return static_cast<unsigned long>(m_frames.size()); }
        const QorGuider& GetFrame(unsigned long i) const { return m_frames[i]; }

    protected:
        friend class QorAnimSet;

        /// The sprite's rectangle through the compositor (left = x, right = x + width - 1, ...).
        char ReceiveRect(QorRect* rect);

        /// The picture of each frame in the compositor.
        std::vector<QorGuider> m_frames;
        QorGuider m_sprite;
        /// The next frame to show.
        std::uint32_t m_frameIndex = 0;
        char m_finished = 0;
        char m_running = 0;
        std::int32_t m_originX = 0;
        std::int32_t m_originY = 0;
        QorAnimUnit* m_unit = nullptr;
        QorOffScreenBuffer* m_buffer = nullptr;
    };

    QorAnimSet();
    QorAnimSet(const QorAnimSet&) = delete;
    QorAnimSet& operator=(const QorAnimSet&) = delete;
    /// Closes the set: its sprites and pool pictures leave the compositor.
    virtual ~QorAnimSet();

    /// Reads the set file name with flag (0: the file's own flag). 0, the previous contents kept, when the
    /// file does not open; 0 with the set empty for a wrong magic, or for counts, offsets, tables or frame
    /// pictures that do not fit the file (whatever was read of it is released).
    char Open(const char* name, OpenFlag flag);
    /// Releases everything read: running animations (their sprites), units and pool pictures.
    void Close() { CleanHeader(); }
    /// Gives the set, and every running animation, the compositor they draw in.
    void SetOffScreenBufferPtr(QorOffScreenBuffer* buffer);
    QorOffScreenBuffer* GetOffScreenBufferPtr() const { return m_buffer; }

    /// A new animation of the unit named name: invisible, not running, on frame 0's place. Empty guider for
    /// an unknown name, a unit without frames or frames that do not fit the file, or without a compositor.
    QorGuider CreateAnim(const char* name);
    /// Removes the animation's sprite, releases its pictures and clears g. 0 when g names no animation of
    /// the set.
    char DestroyAnim(QorGuider& g);
    /// Starts from frame 0, showing it at once, and makes the sprite visible.
    char ActiveAnim(QorGuider& g);
    /// Stops and hides.
    char DeactiveAnim(QorGuider& g);
    /// The next tick shows frame 0.
    char ResetAnim(QorGuider& g);
    /// Stops without moving the frame index; 0 when not running.
    char PauseAnim(QorGuider& g);
    /// Runs on from the frame index; 0 when running.
    char ResumeAnim(QorGuider& g);
    /// The running byte; 0xFF when g names no animation.
    unsigned char IsAnimActive(QorGuider& g);
    /// Sets the sprite's visibility.
    char ShowAnim(QorGuider& g, char show);
    /// Moves the origin to (x, y) and places the sprite by the offsets of the frame at the frame index
    /// (the last frame once the index has passed it); with redraw, repaints the sprite.
    char MoveAnim(QorGuider& g, long x, long y, char redraw);
    /// The sprite guider inside the animation's record; null when g names no animation.
    /// \note The pointer lives as long as the animation: DestroyAnim and Open free the record.
    QorGuider* GetSprite(QorGuider& g);
    /// Animations started and not paused, deactivated or destroyed (a play-once animation that ends by
    /// itself stays counted).
    long GetActAnimNum() const { return m_activeCount; }
    /// One step of the animations. redraw 0: every running one, nothing redrawn. Otherwise every running or
    /// finished one, then the united rectangle of their changes is recomposed in the main buffer (also when
    /// nothing changed).
    void TimerClick(char redraw);

    /// Keeps (1) or drops (0) the unit's frames between its animations. 0 for an index outside the units.
    char SetUnitResident(long unitIndex, char resident);
    long GetPicCount() const { return static_cast<long>(m_picCount); }
    long GetUnitCount() const { return static_cast<long>(m_unitCount); }
    /// The use count of a pool picture; 0 outside the pool.
    long GetPicUseCount(long picIndex) const;
    /// The compositor guider of a pool picture; null when it is not loaded or outside the pool.
    QorGuider GetPicGuider(long picIndex) const;
    /// The unit at index; null outside the units.
    const QorAnimUnit* GetUnit(long unitIndex) const;
    /// The flag Open used (the file's default when given 0).
    long GetOpenFlag() const { return m_openFlag; }
    unsigned long GetVersion() const { return m_version; }
    unsigned long GetHeaderValue() const { return m_headerValue; }
    const QorString& GetFileName() const { return m_fileName; }
    /// Running records, created or not yet destroyed.
    unsigned long GetAnimCount() const { return m_running.GetSize(); }

protected:
    /// Index of the first unit named exactly name (case-sensitive); -1 when none.
    long FindIndex(const char* name) const;
    /// Removes the running sprites and the pool pictures from the compositor and frees everything read.
    void CleanHeader();
    /// The running record g points at; null when it is not one of this set's.
    QorAnimUnitRun* FindRun(const QorGuider& g);
    /// Reads the offset tables and the units after the header; 0 when anything does not fit the file.
    char ReadTables(unsigned long fileLength);
    /// Frees one running record: list link, sprite, pool use counts, and the unit's frames with its last
    /// animation when the unit is not resident.
    void ReleaseRun(QorAnimUnitRun* run);

    std::uint32_t m_magic = kMagic;
    std::uint32_t m_version = kVersion;
    std::uint32_t m_headerValue = 0;
    std::uint32_t m_picCount = 0;
    std::unique_ptr<std::uint32_t[]> m_picOffsets;
    std::unique_ptr<QorGuider[]> m_picGuiders;
    std::unique_ptr<std::int32_t[]> m_picUseCounts;
    std::uint32_t m_unitCount = 0;
    std::unique_ptr<std::uint32_t[]> m_unitOffsets;
    std::unique_ptr<QorAnimUnit[]> m_units;
    std::int32_t m_openFlag = 0;
    QorString m_fileName;
    QorString m_picFormatName;
    QorFile m_file;
    Cycle<QorAnimUnitRun*> m_running;
    std::int32_t m_activeCount = 0;
    QorOffScreenBuffer* m_buffer = nullptr;
};

/// Writes animation set files that QorAnimSet::Open reads: the header, the picture and unit offset tables,
/// the units directly behind them (so that open flag 1 reads them in order), then the pool pictures in the
/// QGB layout.
class QOR_API QorAnimSetWriter
{
public:
    QorAnimSetWriter() = default;

    /// Adds a copy of picture to the pool; returns its pool index, -1 when it could not be kept.
    long AddPicture(const QorPicBlock& picture);
    /// Adds a unit of frames frames: pics, xs and ys each hold frames values. Returns the unit's index, -1
    /// (nothing added) for a null or over-30-byte name (never truncated), a negative frame count, missing
    /// tables, or a frame whose picture is not in the pool yet.
    long AddUnit(const char* name, long mode, long x, long y, long depth, const long* pics, const long* xs,
                 const long* ys, long frames);
    /// The flag stored at offset 12 (what Open does when given 0); 2 unless set.
    void SetDefaultOpenFlag(long flag) { m_defaultFlag = static_cast<std::int32_t>(flag); }
    /// Writes the set to path. Returns the file's size in bytes, 0 when it could not be written.
    unsigned long Write(const char* path);

    long GetPicCount() const { return static_cast<long>(m_pictures.size()); }
    long GetUnitCount() const { return static_cast<long>(m_units.size()); }

private:
    struct Unit
    {
        char name[QorAnimSet::kNameSize];
        std::int32_t mode, x, y, depth;
        std::vector<std::uint32_t> pics;
        std::vector<std::int32_t> xs, ys;
    };
    std::vector<QorPicBlock> m_pictures;
    std::vector<Unit> m_units;
    std::int32_t m_defaultFlag = QorAnimSet::kReadHeaders;
};
