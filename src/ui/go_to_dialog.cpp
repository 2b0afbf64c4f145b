#include "ui/go_to_dialog.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>
#include <utility>

namespace tarno2 {

GoToDialog::GoToDialog(const QString& title, const QString& hint, std::function<QString(const QString&)> go,
                       QWidget* parent)
    : QDialog(parent), go_(std::move(go)), place_(new QLineEdit(this)), problem_(new QLabel(this)) {
    setWindowTitle(title);
    place_->setObjectName(QStringLiteral("GoToPlace"));
    problem_->setObjectName(QStringLiteral("GoToProblem"));
    problem_->setWordWrap(true);
    problem_->setStyleSheet(QStringLiteral("color: #d03030;"));
    // Room for two lines from the beginning, so that a problem moves nothing.
    problem_->setMinimumHeight(2 * fontMetrics().lineSpacing());
    problem_->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    auto* hintLabel = new QLabel(hint, this);
    hintLabel->setBuddy(place_);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(hintLabel);
    layout->addWidget(place_);
    layout->addWidget(problem_);
    layout->addWidget(buttons);
}

void GoToDialog::accept() {
    const QString problem = go_(place_->text());
    problem_->setText(problem);
    if (problem.isEmpty()) {
        QDialog::accept();
    } else {
        place_->selectAll();
        place_->setFocus();
    }
}

}  // namespace tarno2
