#include "scan/device/VolumeLabel.h"
#include <blkid/blkid.h>

namespace {
// The platform's label API gives at most this many characters.
constexpr int kMaxLabelChars = 100;
}

QString VolumeLabel::probe(int fd, quint64 offset, quint64 size)
{
    if (fd < 0 || size == 0)
        return {};
    blkid_probe pr = blkid_new_probe();
    if (!pr)
        return {};
    QString label;
    if (blkid_probe_set_device(pr, fd, blkid_loff_t(offset), blkid_loff_t(size)) == 0) {
        blkid_probe_enable_superblocks(pr, 1);
        blkid_probe_set_superblocks_flags(pr, BLKID_SUBLKS_LABEL);
        const char* value = nullptr;
        if (blkid_do_safeprobe(pr) == 0 && blkid_probe_lookup_value(pr, "LABEL", &value, nullptr) == 0 && value)
            label = QString::fromUtf8(value).left(kMaxLabelChars);
    }
    blkid_free_probe(pr);
    return label;
}
