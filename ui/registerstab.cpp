#include "ui/registerstab.h"
#include "ui_registerstab.h"

#include "app/accessgate.h"
#include "app/report.h"
#include "regs/devicemap.h"
#include "regs/registerio.h"
#include "regs/registervalue.h"
#include "settings/registerrange.h"
#include "wren/wrenreport.h"

#include <QComboBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QSaveFile>
#include <QScopedValueRollback>
#include <QStyledItemDelegate>

namespace {

constexpr int kEntryRole = Qt::UserRole;
constexpr int kFieldRole = Qt::UserRole + 1; // -1 for a register, -2 for a block
constexpr int kNamesRole = Qt::UserRole + 2; // a field's named values, for the editor
constexpr QRgb kChangedRgb = qRgb(255, 228, 160);
constexpr QRgb kEditedRgb = qRgb(40, 90, 200);

// The value column edits in a combo box that offers a field's named values and takes any text.
class ValueDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override
    {
        const QStringList names = index.data(kNamesRole).toStringList();
        if (names.isEmpty())
            return QStyledItemDelegate::createEditor(parent, option, index);
        auto *box = new QComboBox(parent);
        box->setEditable(true);
        box->addItems(names);
        return box;
    }
    void setEditorData(QWidget *editor, const QModelIndex &index) const override
    {
        if (auto *box = qobject_cast<QComboBox *>(editor))
            box->setCurrentText(index.data().toString());
        else
            QStyledItemDelegate::setEditorData(editor, index);
    }
    void setModelData(QWidget *editor, QAbstractItemModel *model,
                      const QModelIndex &index) const override
    {
        if (auto *box = qobject_cast<QComboBox *>(editor))
            model->setData(index, box->currentText());
        else
            QStyledItemDelegate::setModelData(editor, model, index);
    }
};

QString addressText(quint32 address)
{
    return QStringLiteral("0x") +
           QStringLiteral("%1").arg(address, 8, 16, QLatin1Char('0')).toUpper();
}

QString bitsText(const RegisterField &field)
{
    return field.msb == field.lsb ? QStringLiteral("[%1]").arg(field.lsb)
                                  : QStringLiteral("[%1:%2]").arg(field.msb).arg(field.lsb);
}

} // namespace

RegistersTab::RegistersTab(QWidget *parent) : QWidget(parent), m_ui(new Ui::RegistersTab)
{
    m_ui->setupUi(this);
    m_ui->registersTree->setItemDelegateForColumn(ValueColumn,
                                                  new ValueDelegate(m_ui->registersTree));
    connect(m_ui->registersReadButton, &QPushButton::clicked, this, &RegistersTab::readSelected);
    connect(m_ui->registersReadAllButton, &QPushButton::clicked, this, &RegistersTab::readAll);
    connect(m_ui->registersWriteButton, &QPushButton::clicked, this, &RegistersTab::writeEdited);
    connect(m_ui->registersLoadMapButton, &QPushButton::clicked, this, &RegistersTab::loadMap);
    connect(m_ui->registersFilterLineEdit, &QLineEdit::textChanged, this,
            &RegistersTab::rebuildTree);
    connect(m_ui->registersTree, &QTreeWidget::itemChanged, this, &RegistersTab::takeEdit);
    for (const QString &file : RegisterCatalog::environmentMaps())
        (void)addMapFile(file);
    rebuildTree();
    m_ui->registersSplitter->setStretchFactor(0, 3);
    m_ui->registersSplitter->setStretchFactor(1, 2);
    m_ui->registersWatchPlot->setZeroBased(false);
    connectWatchForm();
    showWatchRunning(false);
}

RegistersTab::~RegistersTab() = default;

void RegistersTab::setAgent(WrenAgent *agent)
{
    m_agent = agent;
    connect(agent->gate(), &AccessGate::busyChanged, this, &RegistersTab::setBusy);
    delete m_watch;
    m_watch = new RegisterWatch(agent, this);
    connectWatch();
}

void RegistersTab::setBusy(bool busy)
{
    for (QPushButton *button : {m_ui->registersReadButton, m_ui->registersReadAllButton,
                                m_ui->registersWriteButton, m_ui->registersLoadMapButton})
        button->setEnabled(!busy);
}

bool RegistersTab::addMapFile(const QString &fileName)
{
    if (const std::optional<MapError> failure = m_catalog.loadFile(fileName)) {
        reportError(failure->text());
        return false;
    }
    reportResult(tr("Register map %1 loaded").arg(QFileInfo(fileName).fileName()));
    m_lastRead.clear();
    rebuildTree();
    return true;
}

void RegistersTab::loadMap()
{
    const QString fileName =
        QFileDialog::getOpenFileName(this, tr("Load Register Map"), QString(),
                                     tr("Register maps (*.toml *.xml);;All files (*)"));
    if (!fileName.isEmpty())
        (void)addMapFile(fileName);
}

void RegistersTab::rebuildTree()
{
    const QScopedValueRollback<bool> updating(m_updating, true);
    QTreeWidget *tree = m_ui->registersTree;
    tree->clear();
    m_items.clear();
    m_edits.clear();
    QString pattern = m_ui->registersFilterLineEdit->text().trimmed();
    if (!pattern.isEmpty() && !pattern.contains(QLatin1Char('*')) &&
        !pattern.contains(QLatin1Char('?')))
        pattern = QLatin1Char('*') + pattern + QLatin1Char('*');
    QHash<QString, QTreeWidgetItem *> blocks;
    for (const int index : m_catalog.match(pattern)) {
        const RegisterEntry &e = m_catalog.entry(index);
        QTreeWidgetItem *&block = blocks[e.block];
        if (!block) {
            block = new QTreeWidgetItem(tree, {e.block});
            block->setData(NameColumn, kFieldRole, -2);
            block->setExpanded(true);
            block->setFirstColumnSpanned(false);
        }
        auto *item = new QTreeWidgetItem(block, {e.reg.name, addressText(e.address),
                                                 RegisterMap::accessWord(e.reg.access), QString(),
                                                 QString(), e.reg.description});
        item->setData(NameColumn, kEntryRole, index);
        item->setData(NameColumn, kFieldRole, -1);
        if (RegisterMap::writable(e.reg.access))
            item->setFlags(item->flags() | Qt::ItemIsEditable);
        m_items.insert(index, item);
        // The user's own maps open with their fields shown; the device's stay compact.
        item->setExpanded(e.source != QLatin1String(DeviceMap::kSource));
        for (int f = 0; f < e.reg.fields.size(); ++f) {
            const RegisterField &field = e.reg.fields.at(f);
            auto *child = new QTreeWidgetItem(item, {field.name, bitsText(field),
                                                     RegisterMap::accessWord(field.access),
                                                     QString(), QString(), field.description});
            child->setData(NameColumn, kEntryRole, index);
            child->setData(NameColumn, kFieldRole, f);
            QStringList names;
            for (const NamedValue &named : field.values)
                names << named.name;
            child->setData(ValueColumn, kNamesRole, names);
            if (RegisterMap::writable(field.access) && RegisterMap::writable(e.reg.access))
                child->setFlags(child->flags() | Qt::ItemIsEditable);
        }
        if (m_lastRead.contains(index))
            showValue(index, m_lastRead.value(index), false);
    }
    fitColumns();
}

void RegistersTab::fitColumns()
{
    for (int column = 0; column < DescriptionColumn; ++column)
        m_ui->registersTree->resizeColumnToContents(column);
}

QList<int> RegistersTab::visibleEntries() const
{
    QList<int> entries;
    entries.reserve(m_items.size());
    for (auto it = m_items.cbegin(); it != m_items.cend(); ++it)
        entries << it.key();
    std::sort(entries.begin(), entries.end());
    return entries;
}

void RegistersTab::readSelected()
{
    QList<int> entries;
    for (QTreeWidgetItem *item : m_ui->registersTree->selectedItems()) {
        if (item->data(NameColumn, kFieldRole).toInt() == -2) {
            for (int i = 0; i < item->childCount(); ++i)
                entries << item->child(i)->data(NameColumn, kEntryRole).toInt();
        } else {
            entries << item->data(NameColumn, kEntryRole).toInt();
        }
    }
    if (entries.isEmpty()) {
        reportError(tr("Select the registers to read, or press Read All"));
        return;
    }
    readEntries(entries);
}

void RegistersTab::readAll()
{
    readEntries(visibleEntries());
}

void RegistersTab::readEntries(const QList<int> &entries)
{
    if (!m_agent)
        return;
    RegisterIo io(m_catalog, m_agent, m_accessTimeoutMs);
    QHash<int, quint64> values;
    try {
        values = io.read(entries);
    } catch (const WrenError &error) {
        reportWrenError(error, RegisterRange::readTimeoutText());
        emit transmissionFailed();
        return;
    }
    const QScopedValueRollback<bool> updating(m_updating, true);
    for (auto it = values.cbegin(); it != values.cend(); ++it) {
        const bool changed =
            m_lastRead.contains(it.key()) && m_lastRead.value(it.key()) != it.value();
        showValue(it.key(), it.value(), changed);
        m_lastRead.insert(it.key(), it.value());
    }
    fitColumns();
    reportResult(tr("%1 registers read").arg(values.size()));
    emit transmissionSuccessed();
}

// Shows a register's raw and decoded values; `changed` marks what differs from the last read.
void RegistersTab::showValue(int entry, quint64 raw, bool changed)
{
    QTreeWidgetItem *item = m_items.value(entry);
    if (!item)
        return;
    const Register &reg = m_catalog.entry(entry).reg;
    const quint64 before = m_lastRead.value(entry, raw);
    const QBrush changedBrush(QColor::fromRgb(kChangedRgb));
    item->setText(RawColumn, RegisterValue::format(raw, reg.size * 8, ValueFormat::Hex));
    item->setText(ValueColumn, RegisterValue::format(reg, raw));
    for (const int column : {RawColumn, ValueColumn}) {
        item->setData(column, Qt::BackgroundRole, changed ? changedBrush : QBrush());
        item->setData(column, Qt::ForegroundRole, QVariant());
    }
    m_edits.remove(item);
    for (int f = 0; f < item->childCount(); ++f) {
        QTreeWidgetItem *child = item->child(f);
        const RegisterField &field = reg.fields.at(f);
        const bool fieldChanged = changed && field.extract(before) != field.extract(raw);
        child->setText(RawColumn,
                       RegisterValue::format(field.extract(raw), field.width(), ValueFormat::Hex));
        child->setText(ValueColumn, RegisterValue::format(field, raw));
        for (const int column : {RawColumn, ValueColumn}) {
            child->setData(column, Qt::BackgroundRole, fieldChanged ? changedBrush : QBrush());
            child->setData(column, Qt::ForegroundRole, QVariant());
        }
        m_edits.remove(child);
    }
}

// A value typed into the Value column waits, marked, for Write.
void RegistersTab::takeEdit(QTreeWidgetItem *item, int column)
{
    if (m_updating || column != ValueColumn)
        return;
    const int entry = item->data(NameColumn, kEntryRole).toInt();
    const int fieldIndex = item->data(NameColumn, kFieldRole).toInt();
    const Register &reg = m_catalog.entry(entry).reg;
    QString error;
    const std::optional<quint64> value =
        fieldIndex < 0
            ? RegisterValue::parse(item->text(ValueColumn), reg.size * 8, reg.format, {}, &error)
            : RegisterValue::parse(item->text(ValueColumn), reg.fields.at(fieldIndex).width(),
                                   reg.fields.at(fieldIndex).format,
                                   reg.fields.at(fieldIndex).values, &error);
    const QScopedValueRollback<bool> updating(m_updating, true);
    if (!value) {
        reportError(tr("%1: %2").arg(item->text(NameColumn), error));
        if (m_lastRead.contains(entry))
            showValue(entry, m_lastRead.value(entry), false);
        else
            item->setText(ValueColumn, QString());
        return;
    }
    m_edits.insert(item, *value);
    item->setData(ValueColumn, Qt::ForegroundRole, QBrush(QColor::fromRgb(kEditedRgb)));
    QFont font = item->font(ValueColumn);
    font.setBold(true);
    item->setFont(ValueColumn, font);
}

void RegistersTab::writeEdited()
{
    if (!m_agent)
        return;
    if (m_edits.isEmpty()) {
        reportError(tr("Nothing to write: type a value into the Value column first"));
        return;
    }
    QList<FieldWrite> writes;
    QList<int> entries;
    for (auto it = m_edits.cbegin(); it != m_edits.cend(); ++it) {
        const int entry = it.key()->data(NameColumn, kEntryRole).toInt();
        writes.append({{entry, it.key()->data(NameColumn, kFieldRole).toInt()}, it.value()});
        entries << entry;
    }
    RegisterIo io(m_catalog, m_agent, m_accessTimeoutMs);
    io.setExpert(m_expert);
    if (const QString refusal = io.checkWrites(writes); !refusal.isEmpty()) {
        reportError(refusal);
        return;
    }
    try {
        AccessGate::Hold hold(m_agent->gate());
        (void)io.apply(writes);
    } catch (const WrenError &error) {
        reportWrenError(error, RegisterRange::writeTimeoutText());
        emit transmissionFailed();
        return;
    }
    reportResult(RegisterRange::writeDoneText());
    for (auto it = m_edits.cbegin(); it != m_edits.cend(); ++it) {
        QFont font = it.key()->font(ValueColumn);
        font.setBold(false);
        it.key()->setFont(ValueColumn, font);
    }
    m_edits.clear();
    readEntries(entries); // shows what the device holds now
}

// Watch

void RegistersTab::connectWatch()
{
    connect(m_watch, &RegisterWatch::sampled, this, &RegistersTab::showWatchSample);
    connect(m_watch, &RegisterWatch::failed, this, &RegistersTab::showWatchFailure);
    connect(m_watch, &RegisterWatch::runningChanged, this, &RegistersTab::showWatchRunning);
}

void RegistersTab::connectWatchForm()
{
    connect(m_ui->registersWatchStartButton, &QPushButton::clicked, this,
            &RegistersTab::startWatch);
    connect(m_ui->registersWatchStopButton, &QPushButton::clicked, this, &RegistersTab::stopWatch);
    connect(m_ui->registersWatchExportButton, &QPushButton::clicked, this,
            &RegistersTab::exportWatch);
    connect(m_ui->registersTree, &QTreeWidget::currentItemChanged, this,
            &RegistersTab::fillWatchTarget);
}

// A register or field picked in the tree becomes what to watch.
void RegistersTab::fillWatchTarget(QTreeWidgetItem *item)
{
    if (!item || (m_watch && m_watch->isRunning()))
        return;
    const int field = item->data(NameColumn, kFieldRole).toInt();
    if (field == -2)
        return;
    const RegisterEntry &entry = m_catalog.entry(item->data(NameColumn, kEntryRole).toInt());
    m_ui->registersWatchTargetLineEdit->setText(field < 0 ? entry.name()
                                                          : entry.name() + QLatin1Char('.') +
                                                                entry.reg.fields.at(field).name);
}

void RegistersTab::startWatch()
{
    if (!m_watch || m_watch->isRunning())
        return;
    const QString target = m_ui->registersWatchTargetLineEdit->text().trimmed();
    QString error;
    if (target.isEmpty()) {
        error = tr("Type an address or a register name to watch");
    } else if (target.contains(QLatin1Char('.'))) {
        error = m_watch->watchName(m_catalog, target);
    } else {
        quint32 address = 0;
        error = RegisterRange::parseAddress(target, &address);
        if (error.isEmpty())
            error = m_watch->watchRange(address, m_ui->registersWatchLengthSpinBox->value());
    }
    m_ui->registersWatchErrorLabel->setText(error);
    if (!error.isEmpty()) {
        reportError(error);
        return;
    }
    PlotWidget *plot = m_ui->registersWatchPlot;
    plot->clear();
    plot->setStyle(m_watch->isNumeric() ? PlotWidget::Style::Line : PlotWidget::Style::Marks);
    plot->setUnit(m_watch->targetText());
    m_ui->registersWatchChangesTree->clear();
    m_watchRows.clear();
    m_watch->setIntervalMs(m_ui->registersWatchIntervalSpinBox->value());
    m_watch->setTimeoutMs(m_accessTimeoutMs);
    m_watch->start();
}

void RegistersTab::stopWatch()
{
    if (m_watch)
        m_watch->stop();
}

void RegistersTab::showWatchRunning(bool running)
{
    m_ui->registersWatchStartButton->setEnabled(!running);
    m_ui->registersWatchStopButton->setEnabled(running);
    for (QWidget *field : std::initializer_list<QWidget *>{m_ui->registersWatchTargetLineEdit,
                                                           m_ui->registersWatchLengthSpinBox,
                                                           m_ui->registersWatchIntervalSpinBox})
        field->setEnabled(!running);
}

// Numbers are drawn at every read; other values as a mark where they changed.
void RegistersTab::showWatchSample(const WatchSample &sample)
{
    const double seconds = double(sample.elapsedMs) / 1000;
    if (sample.number)
        m_ui->registersWatchPlot->append(seconds, *sample.number);
    if (!sample.changed)
        return;
    if (!sample.number)
        m_ui->registersWatchPlot->append(seconds, 0);
    QTreeWidget *list = m_ui->registersWatchChangesTree;
    if (list->topLevelItemCount() >= kMaxWatchRows) {
        delete list->takeTopLevelItem(0);
        m_watchRows.removeFirst();
    }
    auto *item = new QTreeWidgetItem(
        list, {sample.time.toString(QStringLiteral("HH:mm:ss.zzz")), sample.text});
    list->scrollToItem(item);
    if (list->topLevelItemCount() == 1)
        list->resizeColumnToContents(0);
    m_watchRows << m_watch->csvRow(sample);
}

void RegistersTab::showWatchFailure(const QString &reason)
{
    m_ui->registersWatchErrorLabel->setText(reason);
    reportError(reason);
    emit transmissionFailed();
}

void RegistersTab::exportWatch()
{
    const QString fileName = QFileDialog::getSaveFileName(this, tr("Export CSV"), QString(),
                                                          tr("CSV files (*.csv);;All files (*)"));
    if (!fileName.isEmpty())
        (void)exportWatchCsv(fileName);
}

bool RegistersTab::exportWatchCsv(const QString &fileName)
{
    QSaveFile file(fileName);
    QByteArray text = RegisterWatch::csvHeader().toUtf8() + '\n';
    for (const QString &row : std::as_const(m_watchRows))
        text += row.toUtf8() + '\n';
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size() || !file.commit()) {
        reportError(tr("Cannot write %1: %2").arg(fileName, file.errorString()));
        return false;
    }
    reportResult(tr("Watch exported to %1").arg(QFileInfo(fileName).fileName()));
    return true;
}
