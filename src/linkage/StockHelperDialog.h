#pragma once

#include "stockclient/StockRecords.h"

#include <QDialog>
#include <QList>
#include <QString>

class PlatformOperations;
class QComboBox;
class QJsonObject;
class QLabel;
class QPushButton;
class StockApiClient;

/// The dialog in which the user tells which version of Tdx and of Ths is installed. Each version keeps the
/// open stock's code somewhere else, and few users know their version, so the dialog finds it by trial: it
/// reads the running program with the offset of each version that the service lists, until one yields a code.
/// The choice is kept by the service, and in part in the settings.
///
/// It asks the service when it is shown for the first time. A trial runs on the main thread.
class StockHelperDialog final : public QDialog
{
    Q_OBJECT

public:
    /// `operations` is what the trading programs are read by, and outlives the dialog.
    explicit StockHelperDialog(PlatformOperations &operations, QWidget *parent = nullptr);
    ~StockHelperDialog() override;
    Q_DISABLE_COPY_MOVE(StockHelperDialog)

protected:
    void showEvent(QShowEvent *event) override;

private slots:
    void onTdxTestClicked();
    void onThsTestClicked();
    void onSaveClicked();
    void onCloseClicked();
    void onCurrentSoftwareChanged(int index);
    void onTdxVersionChanged();
    void onThsVersionChanged();

private:
    enum class Program
    {
        Tdx,
        Ths
    };
    /// Why a version failed its test; the numbers are those of the trial's result code.
    enum TestResult
    {
        NotTested = 0,
        NotRunning = 1,
        WrongVersion = 2
    };
    /// What belongs to one of the two programs.
    struct Side
    {
        QString software; ///< its name in the settings and at the service
        QString word;
        QString version; ///< the confirmed one
        bool tested = false;
        QList<SoftwareVersion> versions;
        QComboBox *comboBox = nullptr;
        QPushButton *testButton = nullptr;
    };

    void buildForm();
    void load();
    void onConfigReceived(const QJsonObject &config);
    void onSoftwareListReceived(const SoftwareList &softwareList);
    void onConfigSaved(bool success);
    void onQueryError(const QString &error);

    Side &sideOf(Program program) { return program == Program::Tdx ? m_tdx : m_ths; }
    void testChosenVersion(Program program);
    bool testVersion(Program program, int index, TestResult &result);
    bool readCode(Program program, const QString &offset, QString &code, TestResult &result);
    void autoTest(Program program);
    void saveConfiguration();
    void storeLocally();
    void showVersion(const QString &version);
    static void selectConfirmed(const Side &side);
    static QString offsetOf(const Side &side);

    PlatformOperations &m_operations;
    StockApiClient *m_apiClient = nullptr;
    Side m_tdx;
    Side m_ths;
    QString m_currentSoftware;
    bool m_opened = false;
    QComboBox *m_currentSoftwareComboBox = nullptr;
    QLabel *m_currentVersionLabel = nullptr;
    QPushButton *m_saveButton = nullptr;
    QPushButton *m_closeButton = nullptr;
};
