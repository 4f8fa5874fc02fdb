#include "carving/CarveKinds.h"
#include "carving/kinds/BmpKind.h"
#include "carving/kinds/GifKind.h"
#include "carving/kinds/IcoKind.h"
#include "carving/kinds/IsoMediaKind.h"
#include "carving/kinds/JpegKind.h"
#include "carving/kinds/Mp3Kind.h"
#include "carving/kinds/MpegPsKind.h"
#include "carving/kinds/OggKind.h"
#include "carving/kinds/Ole2Kind.h"
#include "carving/kinds/PdfKind.h"
#include "carving/kinds/PngKind.h"
#include "carving/kinds/PnmKind.h"
#include "carving/kinds/RiffKind.h"
#include "carving/kinds/SevenZipKind.h"
#include "carving/kinds/TiffKind.h"
#include "carving/kinds/ZipKind.h"

#include <QStringList>

namespace {
std::vector<std::unique_ptr<CarveKind>> makeAll()
{
    std::vector<std::unique_ptr<CarveKind>> k;
    k.push_back(std::make_unique<JpegKind>());
    k.push_back(std::make_unique<PngKind>());
    k.push_back(std::make_unique<GifKind>());
    k.push_back(std::make_unique<BmpKind>());
    k.push_back(std::make_unique<TiffKind>(false));
    k.push_back(std::make_unique<TiffKind>(true));
    k.push_back(std::make_unique<IcoKind>());
    k.push_back(std::make_unique<SevenZipKind>());
    k.push_back(std::make_unique<IsoMediaKind>());
    k.push_back(std::make_unique<ZipKind>());
    k.push_back(std::make_unique<PdfKind>());
    k.push_back(std::make_unique<Mp3Kind>(true));
    k.push_back(std::make_unique<Mp3Kind>(false));
    k.push_back(std::make_unique<RiffKind>());
    k.push_back(std::make_unique<Ole2Kind>());
    k.push_back(std::make_unique<OggKind>());
    k.push_back(std::make_unique<MpegPsKind>());
    k.push_back(std::make_unique<PnmKind>());
    return k;
}
} // namespace

CarveKinds::CarveKinds(std::vector<std::unique_ptr<CarveKind>> kinds) : m_kinds(std::move(kinds))
{
    for (const auto& kind : m_kinds) {
        const int first = kind->firstByte();
        for (int b = 0; b < 256; ++b)
            if (first < 0 || first == b)
                m_byFirstByte[size_t(b)].push_back(kind.get());
    }
}

const CarveKinds& CarveKinds::all()
{
    static const CarveKinds kinds(makeAll());
    return kinds;
}

const CarveKind* CarveKinds::match(const uchar* head, size_t bytes) const
{
    if (bytes == 0)
        return nullptr;
    for (const CarveKind* kind : m_byFirstByte[head[0]])
        if (kind->matches(head, bytes))
            return kind;
    return nullptr;
}

QStringList CarveKinds::extensions()
{
    // Those the content can pick besides each kind's own.
    QStringList out{"cr2", "nef", "arw", "dng", "mov", "3gp", "heic", "m4a", "docx", "xlsx", "pptx", "odt",
                    "ods", "odp", "epub", "avi", "webp", "doc", "xls", "ppt", "pgm", "pbm"};
    for (const auto& kind : all().kinds())
        if (!out.contains(kind->extension()))
            out.prepend(kind->extension());
    return out;
}
