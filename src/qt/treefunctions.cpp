#include "qt/delegates_p.h"

#include "qt/files_p.h"
#include "qt/treedump.h"

#include "objectmodel/globalfunctions.h"
#include "objectmodel/inspector.h"
#include "objectmodel/wrap.h"

namespace Vantrel::QtWrapper {

namespace {

std::nullptr_t fail(const QString &text)
{
    Inspector::self()->setError(text);
    return nullptr;
}

QByteArray treeText(const SharedPtr<Object> &root, const QString &format, int depth)
{
    const bool isXml = format.compare(QLatin1String("xml"), Qt::CaseInsensitive) == 0;
    if (!isXml && format.compare(QLatin1String("json"), Qt::CaseInsensitive) != 0) {
        fail(QStringLiteral("Can't dump the tree as \"%1\": the formats are \"xml\" and \"json\"")
                 .arg(format));
        return QByteArray();
    }
    DumpOptions options;
    options.depth = depth;
    const std::unique_ptr<UiElement> tree = dumpTree(root, options);
    if (!tree) {
        return QByteArray();
    }
    return isXml ? toXml(*tree) : toJson(*tree);
}

SharedPtr<Object> dumpAsText(const SharedPtr<Object> &root, const QString &format, int depth)
{
    const QByteArray text = treeText(root, format, depth);
    return text.isEmpty() ? nullptr : wrap(QString::fromUtf8(text));
}

/** Empty @p contents are an error that was reported already. */
SharedPtr<Object> save(const QByteArray &contents, const QString &fileName)
{
    if (contents.isEmpty()) {
        return nullptr;
    }
    const QString error = writeFile(fileName, contents);
    return error.isEmpty() ? Inspector::self()->voidObject()
                           : fail(QStringLiteral("Can't write \"%1\": %2").arg(fileName, error));
}

SharedPtr<Object> saveTree(const SharedPtr<Object> &root, const QString &fileName, int depth)
{
    const bool isJson = fileName.endsWith(QLatin1String(".json"), Qt::CaseInsensitive);
    return save(treeText(root, isJson ? QStringLiteral("json") : QStringLiteral("xml"), depth),
                fileName);
}

SharedPtr<Object> savePicture(const SharedPtr<Object> &root, const QString &fileName, int depth)
{
    DumpOptions options;
    options.depth = depth;
    return save(annotatedPicture(root, options), fileName);
}

} // namespace

void registerDumpFunctions()
{
    using Handle = SharedPtr<Object>;
    addFunction("_vantrel_tree_dump",
                [](Handle object, const QString &format) { return dumpAsText(object, format, -1); },
                {"object", "format"});
    addFunction("_vantrel_tree_dump",
                [](Handle object, const QString &format, int depth) {
                    return dumpAsText(object, format, depth);
                },
                {"object", "format", "depth"});
    addFunction(
        "_vantrel_tree_save",
        [](Handle object, const QString &fileName) { return saveTree(object, fileName, -1); },
        {"object", "fileName"});
    addFunction("_vantrel_tree_save",
                [](Handle object, const QString &fileName, int depth) {
                    return saveTree(object, fileName, depth);
                },
                {"object", "fileName", "depth"});
    addFunction(
        "_vantrel_tree_picture",
        [](Handle object, const QString &fileName) { return savePicture(object, fileName, -1); },
        {"object", "fileName"});
    addFunction("_vantrel_tree_picture",
                [](Handle object, const QString &fileName, int depth) {
                    return savePicture(object, fileName, depth);
                },
                {"object", "fileName", "depth"});
}

} // namespace Vantrel::QtWrapper
