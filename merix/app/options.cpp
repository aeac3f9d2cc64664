// SPDX-License-Identifier: MIT
#include "merix/app/options.h"

#include <QRegularExpression>

namespace merix::app {

namespace {

/// Larger pictures are a slip of the hand: four bytes a pixel are held in memory.
constexpr int kMaxSide = 30000;

bool parseSize(const QString& text, QSize& size) {
    static const QRegularExpression form(QStringLiteral("^(\\d{1,5})x(\\d{1,5})$"));
    const auto match = form.match(text);
    if (!match.hasMatch())
        return false;
    size = QSize(match.captured(1).toInt(), match.captured(2).toInt());
    return size.width() > 0 && size.height() > 0 && size.width() <= kMaxSide && size.height() <= kMaxSide;
}

/// The arguments not read yet.
class Reader {
public:
    Reader(const QStringList& arguments, Options& options)
        : m_arguments(arguments)
        , m_options(options) {}

    bool atEnd() const { return m_next >= m_arguments.size(); }
    QString next() { return m_arguments[m_next++]; }

    bool value(const QString& option, QString& target) {
        if (atEnd())
            return fail(option + QStringLiteral(" needs a value"));
        target = next();
        return true;
    }
    bool fail(const QString& why) {
        m_options.error = why;
        return false;
    }

private:
    const QStringList& m_arguments;
    Options& m_options;
    int m_next = 0;
};

bool setMode(Options& options, Options::Mode mode, const QString& argument, Reader& reader) {
    if (options.mode != Options::Mode::kWindow)
        return reader.fail(argument + QStringLiteral(": only one of --convert, --render, --version and --help"));
    options.mode = mode;
    return true;
}

bool readOption(const QString& argument, Options& o, Reader& reader) {
    if (argument == QLatin1String("--headless"))
        return o.headless = true;
    if (argument == QLatin1String("--no-module"))
        return o.noModule = true;
    if (argument == QLatin1String("--script"))
        return reader.value(argument, o.script);
    if (argument == QLatin1String("--module"))
        return reader.value(argument, o.module);
    if (argument == QLatin1String("--version"))
        return setMode(o, Options::Mode::kVersion, argument, reader);
    if (argument == QLatin1String("--help") || argument == QLatin1String("-h"))
        return setMode(o, Options::Mode::kHelp, argument, reader);
    if (argument == QLatin1String("--convert") || argument == QLatin1String("--render")) {
        const bool convert = argument == QLatin1String("--convert");
        return setMode(o, convert ? Options::Mode::kConvert : Options::Mode::kRender, argument, reader) &&
               reader.value(argument, o.input) && reader.value(argument + QLatin1Char(' ') + o.input, o.output);
    }
    if (argument == QLatin1String("--form")) {
        QString text;
        if (!reader.value(argument, text))
            return false;
        if (text != QLatin1String("text") && text != QLatin1String("binary"))
            return reader.fail(QStringLiteral("--form %1: a form is text or binary").arg(text));
        o.form = text == QLatin1String("text") ? io::DxfForm::kText : io::DxfForm::kBinary;
        return true;
    }
    if (argument == QLatin1String("--size")) {
        QString text;
        if (!reader.value(argument, text))
            return false;
        return parseSize(text, o.size) ||
               reader.fail(QStringLiteral("--size %1: a size is WIDTHxHEIGHT, 1 to %2 each").arg(text).arg(kMaxSide));
    }
    return reader.fail(QStringLiteral("unknown option %1 (merix --help lists them)").arg(argument));
}

} // namespace

Options parseOptions(const QStringList& arguments) {
    Options options;
    Reader reader(arguments, options);
    bool onlyDrawings = false;
    while (!reader.atEnd()) {
        const QString argument = reader.next();
        if (argument.isEmpty()) {
            options.error = QStringLiteral("an argument is empty");
            return options;
        }
        if (!onlyDrawings && argument == QLatin1String("--"))
            onlyDrawings = true;
        else if (onlyDrawings || !argument.startsWith(QLatin1Char('-')))
            options.drawings << argument;
        else if (!readOption(argument, options, reader))
            return options;
    }
    const bool files = options.mode == Options::Mode::kConvert || options.mode == Options::Mode::kRender;
    if (files && !options.drawings.isEmpty())
        options.error = QStringLiteral("%1: one file in and one file out is all").arg(options.drawings.first());
    else if (options.form && options.mode != Options::Mode::kConvert)
        options.error = QStringLiteral("--form: it is for --convert");
    else if (options.form && !options.output.endsWith(QLatin1String(".dxf"), Qt::CaseInsensitive))
        options.error = QStringLiteral("--form: %1 is no .dxf file").arg(options.output);
    return options;
}

QString helpText() {
    return QStringLiteral("usage: merix [OPTION...] [DRAWING...]\n"
                          "       merix --convert IN OUT [--form text|binary]\n"
                          "       merix --render IN OUT.png [--size WxH]\n"
                          "\n"
                          "Opens drawings (.dxf, .merix) with the voice notes in them.\n"
                          "\n"
                          "  --headless       windows are made but shown on no screen; ends after the script, or\n"
                          "                   without one when the drawings are open\n"
                          "  --script FILE    runs FILE (- is standard input) line by line, then ends\n"
                          "  --convert        writes drawing IN as OUT, the kind by its suffix\n"
                          "  --form FORM      a .dxf file is written as text or as binary DXF (else the form it has)\n"
                          "  --render         paints the whole drawing IN into the picture OUT\n"
                          "  --size WxH       size of the picture in pixels (1600x1200)\n"
                          "  --module FILE    loads this module (libMrxPhonomark.mrx beside the program)\n"
                          "  --no-module      loads no module\n"
                          "  --version        tells the version\n"
                          "  --help           this text\n"
                          "\n"
                          "Ends with 0, or with 1 and one line that says what went wrong and where.\n");
}

} // namespace merix::app
