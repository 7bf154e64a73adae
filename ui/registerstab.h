// The Registers tab: the register maps (the device's own and those loaded beside it) as a tree of
// blocks, registers and fields with address, access, raw value and decoded field values. Reads the
// selection or everything shown, takes typed field values or named values and writes them by
// read-modify-write, and marks what changed since the last read. Its accesses go through the
// shared agent and its gate, one at a time like every tab's.
#pragma once

#include "regs/registercatalog.h"
#include "regs/registerwatch.h"
#include "wren/wrenagent.h"

#include <QHash>
#include <QWidget>

#include <memory>

namespace Ui {
class RegistersTab;
}
class QTreeWidgetItem;

class RegistersTab : public QWidget
{
    Q_OBJECT

public:
    // The change list and its CSV keep this many changes, the newest.
    static constexpr int kMaxWatchRows = 10000;

    explicit RegistersTab(QWidget *parent = nullptr);
    ~RegistersTab() override;

    // Hands over the shared agent (not owned).
    void setAgent(WrenAgent *agent);
    // Expert mode allows writes into the top 64 KiB of the address space.
    void setExpertMode(bool expert) { m_expert = expert; }
    void setAccessTimeoutMs(int timeoutMs) { m_accessTimeoutMs = timeoutMs; }
    [[nodiscard]] const RegisterCatalog &catalog() const { return m_catalog; }

signals:
    void transmissionFailed();
    void transmissionSuccessed();

public slots:
    void readSelected();
    void readAll();
    void writeEdited();
    void loadMap();
    // Adds a map file beside the others; reports and returns false when it is refused.
    bool addMapFile(const QString &fileName);

    // Watch
    void startWatch();
    void stopWatch();
    void exportWatch();
    // Writes the changes listed, under the CSV header; reports and returns false on a failure.
    bool exportWatchCsv(const QString &fileName);

private:
    enum Column {
        NameColumn,
        AddressColumn,
        AccessColumn,
        RawColumn,
        ValueColumn,
        DescriptionColumn
    };

    void rebuildTree();
    void fitColumns();
    void readEntries(const QList<int> &entries);
    void showValue(int entry, quint64 raw, bool changed);
    void takeEdit(QTreeWidgetItem *item, int column);
    void setBusy(bool busy);
    [[nodiscard]] QList<int> visibleEntries() const;
    void connectWatch();
    void connectWatchForm();
    void fillWatchTarget(QTreeWidgetItem *item);
    void showWatchSample(const WatchSample &sample);
    void showWatchFailure(const QString &reason);
    void showWatchRunning(bool running);

    std::unique_ptr<Ui::RegistersTab> m_ui;
    WrenAgent *m_agent = nullptr;
    RegisterCatalog m_catalog;
    QHash<int, QTreeWidgetItem *> m_items;     // by entry
    QHash<int, quint64> m_lastRead;            // by entry
    QHash<QTreeWidgetItem *, quint64> m_edits; // typed values waiting for Write
    bool m_expert = false;
    bool m_updating = false;
    int m_accessTimeoutMs = kAccessTimeoutMs;
    RegisterWatch *m_watch = nullptr;
    QStringList m_watchRows; // CSV rows of the changes listed
};
