// Opens arbitrary bytes as an animation set with each open flag, then creates two animations of every unit
// against a small compositor, activates, ticks, moves, pauses and destroys them in an interleaved order.
#include "FuzzInput.h"
#include "qor/animation.h"

#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string& path = qorfuzz::InputPath("animset");
    if (!qorfuzz::WriteInput(path, data, size))
        return 0;
    QorOffScreenBuffer buffer;
    buffer.Initialize(QorPicBlock::Bit8, QorOffScreenBuffer::kDeviceBitmap, 32, 24, nullptr);
    QorAnimSet set;
    set.SetOffScreenBufferPtr(&buffer);
    for (QorAnimSet::OpenFlag flag : {QorAnimSet::kReadAll, QorAnimSet::kReadHeaders, QorAnimSet::kFileDefault})
    {
        if (!set.Open(path.c_str(), flag))
            continue;
        std::vector<QorGuider> anims;
        for (long i = 0; i < set.GetUnitCount() && i < 16; ++i)
        {
            const QorAnimSet::QorAnimUnit* unit = set.GetUnit(i);
            for (int copy = 0; copy < 2; ++copy)
            {
                QorGuider g = set.CreateAnim(unit->GetName());
                if (g.IsValid())
                {
                    set.ActiveAnim(g);
                    anims.push_back(g);
                }
            }
        }
        for (int tick = 0; tick < 5; ++tick)
            set.TimerClick(static_cast<char>(tick & 1));
        for (std::size_t i = 0; i < anims.size(); i += 2)
        {
            set.MoveAnim(anims[i], static_cast<long>(i), -static_cast<long>(i), 1);
            set.PauseAnim(anims[i]);
            set.DestroyAnim(anims[i]);
        }
        for (int tick = 0; tick < 4; ++tick)
            set.TimerClick(1);
        for (std::size_t i = 1; i < anims.size(); i += 2)
        {
            set.DeactiveAnim(anims[i]);
            set.TimerClick(1);
            set.DestroyAnim(anims[i]);
        }
        for (long i = 0; i < set.GetUnitCount() && i < 4; ++i)
        {
            set.SetUnitResident(i, 1);
            QorGuider g = set.CreateAnim(set.GetUnit(i)->GetName());
            set.ActiveAnim(g);
            set.TimerClick(1);
        }
    }
    set.Close();
    return 0;
}
