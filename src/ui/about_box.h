#pragma once

#include <QDialog>
#include <string>

namespace tarno2 {

/// What program this is: version, licence, versions of the toolkit and of the loaded driver, the folder with settings
/// and logs, and the manual.
class AboutBox : public QDialog {
    Q_OBJECT

public:
    struct Facts {
        std::string driver;  ///< name of the loaded driver; empty when there is none
        uint32_t driverInterface = 0;
        std::string programDirectory;
    };
    AboutBox(const Facts& facts, QWidget* parent);

signals:
    void manualAsked();
};

}  // namespace tarno2
