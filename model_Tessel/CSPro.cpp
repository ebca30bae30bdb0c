#include <model_Tessel/CSPro.h>

#include <model_Tessel/CSProEstablishedBuilder_p.h>
#include <model_Tessel/CSProEstablishedReader_p.h>
#include <model_Tessel/CSProJsonReader_p.h>
#include <model_Tessel/CSProWrittenBuilder_p.h>
#include <model_Tessel/CSProWrittenReader_p.h>
#include <model_Tessel/Constants.h>
#include <model_Tessel/DebugLog_p.h>
#include <model_Tessel/ErrorManager.h>
#include <model_Tessel/Numbers_p.h>
#include <model_Tessel/TextEncoding.h>
#include <model_Tessel/TextLines_p.h>

#include <QApplication>
#include <QFile>
#include <QStringBuilder>
#include <QTextCodec>

#include <exception>

namespace {

enum SectionKind { OtherSection, DictionarySection, RecordSection, ItemSection, ValueSetSection };

// The word of a section's header: without brackets, in upper case.
QString headerWord(const QString& header)
{
    QString word = header.mid(1);
    const int end = word.indexOf(QLatin1Char(']'));
    if (end >= 0)
        word.truncate(end);
    return word.toUpper();
}

} // namespace

const QString TCSPro::CSPRO_VER = QStringLiteral("CSPRO"); // clazy:exclude=non-pod-global-static

TCSPro::TCSPro()
{
    useReading(CSProReading::Established);
    createMessageBox();
}

// Kept: what was read outlives the parser.
TCSPro::~TCSPro()
{
    delete msgBox;
}

void TCSPro::loadFromFile(const QString& path)
{
    QFile file(path);
    if (file.open(QIODevice::ReadOnly))
        loadFromData(file.readAll());
}

void TCSPro::loadFromData(const QByteArray& bytes)
{
    const bool asWritten = m_reading == CSProReading::AsWritten;
    QTextCodec* codec = m_codec.isEmpty() ? nullptr : QTextCodec::codecForName(m_codec);
    if (!codec)
        codec = asWritten ? likelyCodec(bytes) : QTextCodec::codecForLocale();
    codec = QTextCodec::codecForUtfText(bytes, codec);
    m_encoding = codec->name();
    if (asWritten && isJson(bytes)) {
        m_encoding = "UTF-8";
        guarded([&](int& line) { CSProJsonReader(*this, *m_builder).read(bytes, line); });
        return;
    }
    const auto ends = asWritten ? TextLines::Ends::All : TextLines::Ends::LineFeeds;
    parse(TextLines(bytes, *codec, ends).lines());
}

void TCSPro::loadFromStr(QStringList* lines)
{
    parse(*lines);
}

template <typename Lines> void TCSPro::parse(const Lines& lines)
{
    guarded([&](int& index) {
        const int count = static_cast<int>(lines.size());
        for (; index < count; ++index)
            parseSection(lines, index);
    });
}

// Runs a load, which keeps the index of the line it is at; whatever ends it becomes error 242.
template <typename Load> void TCSPro::guarded(Load load)
{
    int index = 0;
    m_builder->beginLoad();
    m_reader->beginLoad();
    try {
        load(index);
        m_builder->finishLoad();
        return;
    } catch (OxErrorManager* error) {
        delete error;
    } catch (...) { // the error below tells of it
    }
    m_builder->finishLoad();
    throw new OxErrorManager(ClassNameCSPro, InvalidContents, asCharacter(index));
}

void TCSPro::loadFromCSDB(const QString& path)
{
    Q_UNUSED(path)
    // Kept: such files hold their dictionary in a database, which is not opened.
    try {
        QStringList lines;
        loadFromStr(&lines);
    } catch (OxErrorManager* error) {
        delete error;
    } catch (...) { // nothing is reported here
    }
}

void TCSPro::setTextCodec(const QByteArray& name)
{
    m_codec = name;
}

void TCSPro::setDecimalQuestion(CSProDecimalQuestion question)
{
    m_decimalQuestion = std::move(question);
}

void TCSPro::setReading(CSProReading reading)
{
    if (reading != m_reading)
        useReading(reading);
}

// Chooses who reads lines and who builds of them. Bytes are decoded, and sections of other kinds
// passed over, by the reading as well.
void TCSPro::useReading(CSProReading reading)
{
    m_reading = reading;
    if (reading == CSProReading::AsWritten) {
        m_builder = std::make_unique<CSProWrittenBuilder>(*this, m_findings);
        m_reader = std::make_unique<CSProWrittenReader>(*this, *m_builder);
    } else {
        m_builder = std::make_unique<CSProEstablishedBuilder>(*this, m_findings,
            [this](const CSProProblem& valueSet) { askAboutDecimals(valueSet); });
        m_reader = std::make_unique<CSProEstablishedReader>(*this, *m_builder);
    }
}

CSProReading TCSPro::reading() const
{
    return m_reading;
}

QByteArray TCSPro::textEncoding() const
{
    return m_encoding;
}

const QVector<CSProLanguage>& TCSPro::languages() const
{
    return m_findings.languages;
}

bool TCSPro::setLanguage(const QString& name)
{
    for (int i = 0; i < m_findings.languages.size(); ++i) {
        if (m_findings.languages.at(i).name.compare(name, Qt::CaseInsensitive) == 0) {
            m_language = i;
            return true;
        }
    }
    return false;
}

QString TCSPro::labelText(const QString& label) const
{
    if (m_findings.languages.isEmpty())
        return label;
    const QChar separator = QLatin1Char('|');
    const QString wanted = label.section(separator, m_language, m_language);
    return wanted.isEmpty() ? label.section(separator, 0, 0) : wanted;
}

QString TCSPro::nameOfOccurrence(const TCSProItem& item, const QString& fieldName) const
{
    if (item.occurrence <= 0 || m_reading == CSProReading::AsWritten)
        return fieldName;
    return item.dictionaryName % TokenUnderscore % QString::number(item.occurrence);
}

const QVector<CSProLevel>& TCSPro::levels() const
{
    return m_findings.levels;
}

const QVector<CSProRelation>& TCSPro::relations() const
{
    return m_findings.relations;
}

QString TCSPro::note() const
{
    return m_findings.note;
}

const QVector<CSProProblem>& TCSPro::problems() const
{
    return m_findings.problems;
}

// A section that starts at the line index; any other line is passed over.
template <typename Lines> void TCSPro::parseSection(const Lines& lines, int& index)
{
    const QStringView header = QStringView(lines.at(index)).trimmed();
    if (header.size() < 2 || header.front() != QLatin1Char('[')) {
        m_reader->readOutside(index + 1, header);
        return;
    }
    m_reader->beginSection();
    const QString text = header.toString();
    switch (getItemType(text)) {
    case DictionarySection:
        m_reader->readDictionary(gatherSection(lines, index));
        break;
    case RecordSection:
        m_reader->readRecord(gatherSection(lines, index));
        break;
    case ItemSection:
        m_reader->readItem(gatherSection(lines, index));
        break;
    case ValueSetSection:
        if (m_builder->ignoresValueSets()) {
            // Kept: an ignored set's lines are left to the loop over all lines. Its name stands
            // before whatever may be a header to that loop, so no line is looked at twice here.
            m_reader->ignoreValueSet(gatherSectionHead(lines, index));
        } else {
            m_reader->readValueSet(gatherSection(lines, index));
        }
        break;
    default:
        // Kept: the established reading leaves the lines of other sections to that loop, too.
        if (m_reading == CSProReading::AsWritten)
            m_reader->readOther(headerWord(text), text, gatherSection(lines, index));
        break;
    }
}

int TCSPro::getItemType(const QString& header)
{
    const QString word = headerWord(header);
    if (word == CSProTypeDictionary)
        return DictionarySection;
    if (word == CSProTypeRecord)
        return RecordSection;
    if (word == CSProTypeItem)
        return ItemSection;
    if (word == CSProTypeValueSet)
        return ValueSetSection;
    currentRecord = commonRecord; // what makes the items after "[IdItems]" common ones
    return OtherSection;
}

QStringList* TCSPro::getSection(QStringList* lines, int& index)
{
    auto section = std::make_unique<QStringList>();
    const CSProSection gathered = gatherSection(*lines, index);
    for (const QStringView line : gathered.lines)
        section->append(line.toString());
    return section.release();
}

QString TCSPro::processLine(const QStringList& section, const QString& key, const QString& scratch)
{
    Q_UNUSED(scratch)
    try {
        for (const QString& line : section) {
            if (line.contains(key))
                return csproValue(line).toString();
        }
    } catch (const std::exception& error) {
        TESSEL_DEBUG << error.what();
    }
    return QString();
}

int TCSPro::processLineToInt(const QStringList& section, const QString& key, int defaultValue)
{
    for (const QString& line : section) {
        if (line.contains(key))
            return csproNumber(csproValue(line), defaultValue);
    }
    return defaultValue;
}

void TCSPro::processDictionary(QStringList* lines, int& index)
{
    m_reader->readDictionary(gatherSection(*lines, index));
}

void TCSPro::processRecord(QStringList* lines, int& index)
{
    m_reader->readRecord(gatherSection(*lines, index));
}

// Outside a load a section has the limit of one for itself.
void TCSPro::processItem(QStringList* lines, int& index)
{
    m_builder->beginLoad();
    m_reader->readItem(gatherSection(*lines, index));
}

void TCSPro::processValueSet(QStringList* lines, int& index)
{
    if (!m_builder->ignoresValueSets())
        m_reader->readValueSet(gatherSection(*lines, index));
    m_builder->finishItem();
}

int TCSPro::getRecordsCount()
{
    recordsCount = records->size();
    return recordsCount;
}

TCSProRecord* TCSPro::getRecord(int index) const
{
    return records->at(index);
}

int TCSPro::getItemsCount() const
{
    return items->size();
}

TCSProItem* TCSPro::getItem(int index) const
{
    return items->at(index);
}

QList<TCSProItem*>* TCSPro::getItemsList() const
{
    return items;
}

TCSProRecord* TCSPro::findRecordByValue(const QString& value) const
{
    const auto found = recordsByValue.find(value);
    return found == recordsByValue.end() ? nullptr : found->second;
}

void TCSPro::createMessageBox()
{
    if (!msgBox && qobject_cast<QApplication*>(QCoreApplication::instance()))
        msgBox = new QMessageBox;
}

int TCSPro::showMessageBox(const QString& text, const QString& informativeText,
    const QString& title, QMessageBox::Icon icon)
{
    createMessageBox();
    if (!msgBox)
        return QMessageBox::No;
    msgBox->setTextFormat(Qt::RichText);
    msgBox->setMinimumSize(300, 200);
    msgBox->setText(text);
    msgBox->setInformativeText(informativeText);
    msgBox->setIcon(icon);
    msgBox->setStandardButtons(
        QMessageBox::Yes | QMessageBox::YesToAll | QMessageBox::No | QMessageBox::NoToAll);
    msgBox->setDefaultButton(QMessageBox::No);
    msgBox->setWindowTitle(title);
    return msgBox->exec();
}

void TCSPro::showMessageBoxDecimal(const QString& text, const QString& informativeText,
    const QString& title, QMessageBox::Icon icon)
{
    if (decimalAnswer == 1 || decimalAnswer == 2)
        return;
    decimalButton = m_decimalQuestion ? m_decimalQuestion(m_decimalCase)
                                      : showMessageBox(text, informativeText, title, icon);
}

void TCSPro::askAboutDecimals(const CSProProblem& valueSet)
{
    m_decimalCase = valueSet;
    showMessageBoxDecimal(tr("<b>A decimal number was found</b>"),
        tr("Would you like to convert it to an integer number?"), tr("Caution"),
        QMessageBox::Question);
}

void TCSPro::showMessageBoxUndefined(const QString& text, const QString& informativeText,
    const QString& title, QMessageBox::Icon icon)
{
    if (undefinedAnswer == 1 || undefinedAnswer == 2)
        return;
    undefinedButton = showMessageBox(text, informativeText, title, icon);
}

void TCSPro::processOtherRanges(TCSProValueSet* valueSet, TValueSetItem* entry)
{
    storeSeparately(*valueSet, *entry);
}
