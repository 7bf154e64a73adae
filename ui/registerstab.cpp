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
}

RegistersTab::~RegistersTab() = default;

void RegistersTab::setAgent(WrenAgent *agent)
{
    m_agent = agent;
    connect(agent->gate(), &AccessGate::busyChanged, this, &RegistersTab::setBusy);
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
