#include "subFormGAC.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>

subFormGAC::subFormGAC(const QString& address, int port, QWidget* parent)
    : QDialog(parent)
    , m_address(new QLineEdit(address, this))
    , m_port(new QSpinBox(this))
{
    setWindowTitle(tr("Nuendo Connection Settings"));
    setMinimumSize(300, 141);

    m_address->setObjectName(QStringLiteral("lineEditAddress"));
    m_port->setObjectName(QStringLiteral("spinBoxPort"));
    m_port->setRange(1, 65535);
    m_port->setValue(port);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Cancel)->setText(tr("Cancel"));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* form = new QFormLayout(this);
    form->addRow(tr("Address"), m_address);
    form->addRow(tr("Port Number"), m_port);
    form->addRow(buttons);
}

QString subFormGAC::address() const
{
    return m_address->text();
}

int subFormGAC::port() const
{
    return m_port->value();
}
