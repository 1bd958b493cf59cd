// qor_demo: writes a group file of a few named blocks, reopens it, prints its table and reads every
// block back by name. Usage: qor_demo [output-directory]
#include "qor.h"

#include <cstdio>
#include <string>

#include <sys/stat.h>

namespace
{
// A block holding one string.
class TextBlock : public QorDataBlock
{
public:
    explicit TextBlock(const char* text = "") : m_text(text) {}
    unsigned long LoadData(QorFile& file) override { return m_text.Load(file); }
    unsigned long SaveData(QorFile& file) override { return m_text.Save(file); }
    const QorString& Text() const { return m_text; }

private:
    QorString m_text;
};

// A block holding a date and the rectangle of a window opened at that time.
class StampBlock : public QorDataBlock
{
public:
    unsigned long LoadData(QorFile& file) override
    {
        m_date.Load(file);
        return 30 + m_area.Load(file);
    }
    unsigned long SaveData(QorFile& file) override
    {
        m_date.Save(file);
        return 30 + m_area.Save(file);
    }
    QorDate m_date;
    QorRect m_area;
};

// A block of several strings behind a count.
class ListBlock : public QorDataBlock
{
public:
    unsigned long LoadData(QorFile& file) override
    {
        int count = 0;
        file >> count;
        unsigned long bytes = 4;
        m_items.Empty();
        for (int i = 0; i < count && !file.IsEnd(); ++i)
        {
            QorString item;
            bytes += item.Load(file);
            m_items.Append(item);
        }
        return bytes;
    }
    unsigned long SaveData(QorFile& file) override
    {
        file << static_cast<int>(m_items.GetSize());
        unsigned long bytes = 4;
        for (unsigned long i = 0; i < m_items.GetSize(); ++i)
            bytes += m_items[i].Save(file);
        return bytes;
    }
    Array<QorString> m_items;
};

const char kMagic[4] = {'Q', 'D', 'E', 'M'};
} // namespace

int main(int argc, char** argv)
{
    const std::string outDir = argc > 1 ? argv[1] : "out";
    ::mkdir(outDir.c_str(), 0777);
    const std::string path = outDir + "/demo.qdg";

    TextBlock title("qor demo group");
    StampBlock stamp;
    stamp.m_date.GetCurrent();
    stamp.m_area.SetRect(639, 479, 0, 0);
    ListBlock scenes;
    for (const char* name : {"opening", "classroom", "playground", "ending"})
        scenes.m_items.Append(QorString(name));
    TextBlock greeting("\xa7\x41\xa6\x6e");  // "ni hao" in Big5, stored unconverted

    QorDataGroupWriter writer(kMagic);
    writer.Add("title", &title);
    writer.Add("stamp", &stamp);
    writer.Add("scenes", &scenes);
    writer.Add("greeting.big5", &greeting);
    if (!writer.Add("a name that is far too long for a group table", &title))
        std::printf("refused a name longer than 30 bytes\n");
    const unsigned long written = writer.Write(path.c_str());
    if (!written)
    {
        std::fprintf(stderr, "qor_demo: cannot write %s\n", path.c_str());
        return 1;
    }

    QorDataGroup group(kMagic);
    if (!group.Open(path.c_str()))
    {
        std::fprintf(stderr, "qor_demo: cannot reopen %s\n", path.c_str());
        return 1;
    }
    std::printf("%s: %lu bytes, %lu blocks\n", path.c_str(), written, group.GetCount());
    std::printf("%5s  %-30s %8s %6s\n", "index", "name", "offset", "bytes");
    for (unsigned long i = 0; i < group.GetCount(); ++i)
        std::printf("%5lu  %-30s %8lu %6lu\n", i, group.GetName(i), group.GetOffset(i), group.GetBlockSize(i));

    TextBlock readTitle;
    StampBlock readStamp;
    ListBlock readScenes;
    TextBlock readGreeting;
    group.LoadData(&readTitle, "title");
    group.LoadData(&readStamp, "stamp");
    group.LoadData(&readScenes, "scenes");
    group.LoadData(&readGreeting, group.FindData("greeting.big5"));

    const QorDate& d = readStamp.m_date;
    std::printf("title: %s\n", static_cast<char*>(readTitle.Text()));
    std::printf("stamp: %04d-%02d-%02d %02d:%02d:%02d (Minguo year %d), area %ldx%ld\n", d.year, d.month, d.day,
                d.hour, d.minute, d.second, d.localYear, readStamp.m_area.Width(), readStamp.m_area.Height());
    std::printf("scenes:");
    for (unsigned long i = 0; i < readScenes.m_items.GetSize(); ++i)
        std::printf(" %s", static_cast<char*>(readScenes.m_items[i]));
    std::printf("\ngreeting: %lu Big5 bytes\n", readGreeting.Text().GetLength());

    QorDate created, accessed, modified;
    if (QorFile::GetFileTime(path.c_str(), &created, &accessed, &modified))
        std::printf("file written %04d-%02d-%02d %02d:%02d\n", modified.year, modified.month, modified.day,
                    modified.hour, modified.minute);

    const bool same = readTitle.Text() == title.Text() && readScenes.m_items.GetSize() == 4 &&
                      readStamp.m_area == stamp.m_area && readStamp.m_date == stamp.m_date &&
                      readGreeting.Text() == greeting.Text();
    std::printf("round trip: %s\n", same ? "identical" : "DIFFERENT");
    return same ? 0 : 1;
}
