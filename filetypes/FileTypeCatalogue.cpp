#include "filetypes/FileTypeCatalogue.h"

#include <QFont>
#include <QIcon>
#include <QTreeWidget>

namespace {

const QList<FileTypeCatalogue::Category> kCatalogue = {
    {"文档类",
     {
         {"MS Office 2007 Word文档", ".docx", "128", 1, ""},
         {"MS Office 2007 Excel文档", ".xlsx", "128", 2, ""},
         {"MS Office 2007 PowerPoint文档", ".pptx", "128", 3, ""},
         {"MS Office Word文档", ".doc", "", 4, ""},
         {"MS Office Excel文档", ".xls", "", 5, ""},
         {"MS Office PowerPoint文档", ".ppt", "", 6, ""},
         {"MS Office OneNote文档", ".one", "", 7, ""},
         {"MS Office Visio文档", ".vsd", "", 8, ""},
         {"MS Office Publisher文档", ".pub", "", 9, ""},
         {"MS Office Project文档", ".mpp", "", 10, ""},
         {"OpenOffice.org Writer文档", ".odt", "128", 11, ""},
         {"OpenOffice.org Calc文档", ".ods", "128", 12, ""},
         {"OpenOffice.org Impress文档", ".odp", "128", 13, ""},
         {"OpenOffice.org Draw文档", ".odg", "128", 14, ""},
         {"OpenOffice.org Math文档", ".odf", "128", 15, ""},
         {"OpenOffice.org Base文档", ".odb", "128", 16, ""},
         {"WordPerfect Office WordPerfect文档", ".wpd", "", 17, ""},
         {"WordPerfect Office Quattro Pro文档", ".qpw", "", 18, ""},
         {"WordPerfect Office Presentations文档", ".shw", "", 19, ""},
         {"Adobe PDF文档", ".pdf", "512", 20, ""},
         {"EPUB 电子书", ".epub", "256", 20, ""},
         {"Page Maker文档", ".p65", "", 21, ""},
         {"Crystal Report文档", ".rpt", "", 23, ""},
         {"RTF 文档", ".rtf", "64", 24, ""},
         {"已编译的HTML文档", ".chm", "", 25, ""},
         {"聚合网页文档", ".mht", "64", 26, ""},
         {"Windows Help文档", ".hlp", "", 27, ""},
     }},
    {"照片类",
     {
         {"Jpeg 图片", ".jpg", "64", 28, ""},
         {"TIFF 图片", ".tif;.tiff", "64", 29, ""},
         {"HEIC 图片", ".heic", "64", 28, ""},
         {"Canon Raw图片", ".cr2", "64", 30, ""},
         {"Nikon Raw图片", ".nef", "64", 30, ""},
         {"DNG Raw图片", ".dng", "64", 30, ""},
         {"Sony Raw图片", ".arw", "64", 30, ""},
         {"Olympus Raw图片", ".orf", "64", 30, ""},
         {"Sony SR2 Raw图片", ".sr2", "64", 30, ""},
         {"Panasonic Raw图片", ".raw", "64", 30, ""},
         {"Pentax Raw图片", ".pef", "64", 30, ""},
         {"Mamiya MEF Raw图片", ".mef", "64", 30, ""},
         {"Canon CRW Raw图片", ".crw", "16", 30, ""},
         {"X3F Raw图片", ".x3f", "64", 30, ""},
     }},
    {"音频类",
     {
         {"MP3 声音文件", ".mp3", "256", 31, ""},
         {"波形 声音文件", ".wav", "", 32, ""},
         {"APE 无损压缩声音文件", ".ape", "", 31, ""},
         {"WMA 声音文件", ".wma", "", 31, ""},
         {"MIDI 声音文件", ".mid", "", 33, ""},
         {"AMR 声音文件", ".amr", "16", 31, ""},
         {"OGG 声音文件", ".ogg", "", 31, ""},
         {"Real Media 声音文件", ".ra", "", 34, ""},
         {"Sun/NeXT 声音文件", ".au", "", 35, ""},
         {"Apple 声音文件", ".m4r;.m4a", "", 32, ""},
         {"AIF 声音文件", ".aif", "", 32, ""},
         {"MMF 声音文件", ".mmf", "", 32, ""},
     }},
    {"视频类",
     {
         {"AVI 视频文件", ".avi", "", 361, ""},
         {"MPEG 视频文件", ".mpg", "4096", 361, ""},
         {"WMV 视频文件", ".wmv", "", 361, ""},
         {"MP4 视频文件", ".mp4", "", 35, ""},
         {"M4V 视频文件", ".m4v", "", 35, ""},
         {"QuickTime MOV文件", ".mov", "", 35, ""},
         {"Real Media 视频文件", ".rmvb;.rm", "", 34, ""},
         {"QuickTime 3GP文件", ".3gp", "", 35, ""},
         {"3G2 视频文件", ".3g2", "", 35, ""},
         {"MKV 视频文件", ".mkv", "", 361, ""},
         {"MTS 视频文件", ".mts", "", 361, ""},
         {"FLV 视频文件", ".flv", "", 37, ""},
         {"VCD DAT文件", ".dat", "", 361, ""},
         {"MXF 文件", ".mxf", "", 38, ""},
         {"Windows Media Center TV文件", ".wtv", "", 39, ""},
         {"Flash 源文件", ".fla", "128", 40, ""},
         {"SWiSH MAX文件", ".swi", "128", 41, ""},
         {"WebEx 屏幕录像文件", ".wrf", "", 42, ""},
     }},
    {"Internet类",
     {
         {"HTML 文件", ".html;.htm", "1", 43, ""},
         {"HTML 快捷方式文件", ".url", "1", 44, ""},
         {"Macromedia Flash文件", ".swf", "128", 45, ""},
         {"IE URL 缓存文件", ".dat", "", 46, ""},
     }},
    {"图形类",
     {
         {"BMP 图片文件", ".bmp", "", 47, ""},
         {"GIF 图片文件", ".gif", "", 48, ""},
         {"PNG 图片文件", ".png", "", 49, ""},
         {"WebP 图片文件", ".webp", "", 49, ""},
         {"PPM/PGM/PBM 图片文件", ".ppm;.pgm;.pbm", "", 47, ""},
         {"ICON 图片文件", ".ico", "", 50, ""},
         {"Photoshop PSD文件", ".psd", "2048", 51, ""},
         {"Photoshop Bruashes文件", ".abr", "", 52, ""},
         {"PaperPort文件", ".max", "", 53, ""},
         {"Corel Draw文件", ".cdr", "", 54, ""},
         {"AutoCAD 图形文件", ".dwg", "64", 55, ""},
         {"AutoCAD 图形交换文件", ".dxf", "16", 56, ""},
         {"3D Studio MAX文件", ".max", "", 57, ""},
         {"Maya 3D文件", ".mb", "", 58, ""},
         {"PaintShop 图形文件", ".psp", "", 59, ""},
         {"MacroStaion PowerDraft 图形文件", ".dgn", "", 60, ""},
         {"CAXA 电子图板图形文件", ".exb", "16", 61, ""},
         {"SigmaPlot 文件", ".jnb", "", 62, ""},
         {"DesignCAD 图形文件", ".dcd", "", 63, ""},
         {"QuickCAD 图形文件", ".qcd", "32", 64, ""},
         {"TurboCAD 图形文件", ".tcw", "", 65, ""},
         {"QuarkXPress Project QXP文件", ".qxp", "16", 66, ""},
         {"QuarkXPress Template QPT文件", ".qpt", "16", 67, ""},
         {"SmartDraw 图形文件", ".sdr", "16", 68, ""},
         {"GraphPad Prism 图形文件", ".pzf", "16", 69, ""},
         {"Windows 增强型图元文件", ".emf", "", 70, ""},
         {"OpenCanvas 图形文件", ".oci", "", 71, ""},
         {"ColorProfiles 图形文件", ".icc", "", 72, ""},
         {"Protel PCB 图形文件", ".pcb", "16", 73, ""},
         {"TPF 排版图形文件", ".tpf", "", 74, ""},
         {"GJD 图形文件", ".gjd", "16", 75, ""},
         {"动态光标图形文件", ".ani", "", 76, ""},
         {"Windows Metafile 图元文件", ".wmf", "50", 77, ""},
         {"FontLib 字体文件", ".vfb", "50", 78, ""},
         {"SolidWorks 图形文件", ".sldprt", "", 79, ""},
     }},
    {"压缩文档类",
     {
         {"ZIP 压缩文档", ".zip", "10240", 80, ""},
         {"RAR 压缩文档", ".rar", "10240", 81, ".gz;.tgz;.xz;.bz2"},
         {"7Zip 压缩文档", ".7z", "", 82, ""},
         {"Tar 档案文件", ".tar", "1024", 83, ""},
         {"Microsoft Cabinet文件", ".cab", "", 84, ""},
         {"ISO 光盘镜像文件", ".iso", "", 85, ""},
         {"Ghost 镜像文件", ".gho", "10240", 86, ""},
     }},
    {"邮件类",
     {
         {"Outlook Express DBX文件", ".dbx", "", 87, ""},
         {"Outlook PST文件", ".pst", "", 88, ""},
     }},
    {"其他类型",
     {
         {"OLE2 文件", ".ole2", "", 89, ""},
         {"vCard 文件", ".vcf", "2", 90, ""},
         {"手机备忘录文件", ".vnt", "2", 91, ""},
         {"Mozilla XPCOM 类型库文件", ".xpt", "", 92, ""},
         {"Windows 快捷方式文件", ".lnk", "1", 93, ""},
         {"安卓安装包文件", ".apk", "128", 94, ""},
         {"iOS安装包文件", ".ipa", "128", 95, ""},
         {"PXL安装包文件", ".pxl", "128", 96, ""},
         {"Dalvik DEX文件", ".dex", "", 97, ""},
         {"Java 程序包或资源文件", ".jar", "128", 98, ""},
         {"PKCS#12 Keys文件", ".pfx", "", 99, ""},
         {"ACM 音频压缩驱动管理程序", ".acm", "", 100, ""},
         {"TrueType 字体文件", ".ttf", "", 101, ""},
         {"Adobe PostScript 字体文件", ".pfb", "16", 102, ""},
         {"Windows 应用程序", ".exe", "", 103, ""},
         {"MS-DOS 应用程序", ".com", "", 104, ""},
         {"ActiveX 控件", ".ocx", "", 105, ""},
         {"Windows 动态链接库", ".dll", "", 106, ""},
         {"Windows 系统文件", ".sys", "", 107, ""},
         {"Windows 设备驱动程序", ".drv", "", 108, ""},
         {"Windows Installer 程序包", ".msi", "", 109, ""},
         {"Windows Installer 补丁文件", ".msp", "", 110, ""},
         {"Guitar Pro 5文件", ".gp5", "50", 111, ""},
         {"Sony Vegas文件", ".veg", "", 112, ""},
         {"Pro/Engineer Drawing文件", ".drw", "128", 113, ""},
         {"QQ 聊天记录文件", ".db", "", 114, ""},
     }},
};

constexpr int kCategoryPointSize = 10;
constexpr int kRowPointSize = 9;
constexpr int kColumns = 3;

QStringList splitKeys(const char* joined)
{
    return QString::fromUtf8(joined).split(QLatin1Char(';'), Qt::SkipEmptyParts);
}

QTreeWidgetItem* categoryItem(const FileTypeCatalogue::Category& category)
{
    auto* item = new QTreeWidgetItem(QStringList{QString::fromUtf8(category.name)});
    item->setCheckState(0, Qt::Checked);
    QFont font = item->font(0);
    font.setPointSize(kCategoryPointSize);
    font.setBold(true);
    item->setFont(0, font);
    return item;
}

void addRowItem(QTreeWidgetItem* parent, const FileTypeCatalogue::Row& row)
{
    auto* item = new QTreeWidgetItem(parent, QStringList{QString::fromUtf8(row.description),
                                                         QString::fromUtf8(row.extensions),
                                                         QString::fromUtf8(row.maxSize)});
    item->setIcon(0, QIcon(FileTypeCatalogue::iconPath(row.icon)));
    for (int column = 0; column < kColumns; ++column) {
        QFont font = item->font(column);
        font.setPointSize(kRowPointSize);
        item->setFont(column, font);
    }
    item->setCheckState(0, Qt::Checked);
}

} // namespace

const QList<FileTypeCatalogue::Category>& FileTypeCatalogue::categories()
{
    return kCatalogue;
}

QString FileTypeCatalogue::iconPath(int number)
{
    return QStringLiteral(":./icons/%1.ico").arg(number);
}

void FileTypeCatalogue::fillIconMap(QMap<QString, QString>& iconMap)
{
    for (const Category& category : kCatalogue) {
        for (const Row& row : category.rows) {
            const QString path = iconPath(row.icon);
            for (const QString& key : splitKeys(row.extensions) + splitKeys(row.extraKeys))
                iconMap.insert(key, path);
        }
    }
}

void FileTypeCatalogue::addToTree(QTreeWidget* tree)
{
    for (const Category& category : kCatalogue) {
        QTreeWidgetItem* top = categoryItem(category);
        tree->addTopLevelItem(top);
        for (const Row& row : category.rows)
            addRowItem(top, row);
    }
}
