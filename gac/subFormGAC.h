#pragma once

#include <QDialog>

class QLineEdit;
class QSpinBox;

// "Nuendo Connection Settings": the server's address and port.
class subFormGAC final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(subFormGAC)

public:
    subFormGAC(const QString& address, int port, QWidget* parent = nullptr);

    QString address() const;
    int port() const;

private:
    QLineEdit* m_address;
    QSpinBox* m_port;
};
