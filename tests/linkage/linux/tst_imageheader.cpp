#include "linkage/linux/ImageHeader.h"
#include "linkage/linux/PortableExecutable.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>

Q_DECLARE_METATYPE(ImageHeader::Kind)

class tst_ImageHeader : public QObject
{
    Q_OBJECT

private slots:
    void theKindComesFromThePeMachineOrTheElfClass_data()
    {
        using Kind = ImageHeader::Kind;
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<Kind>("kind");
        QTest::newRow("PE for i386") << PortableExecutable::header(PortableExecutable::i386) << Kind::Image32;
        QTest::newRow("PE for x86-64")
            << PortableExecutable::header(PortableExecutable::amd64) << Kind::Image64;
        QTest::newRow("PE for ARM64") << PortableExecutable::header(0xAA64) << Kind::Image64;
        QTest::newRow("PE for Itanium") << PortableExecutable::header(0x0200) << Kind::None;
        QTest::newRow("signature at the end") << PortableExecutable::header(0x8664, 1018) << Kind::Image64;
        QTest::newRow("signature beyond the bytes") << PortableExecutable::header(0x8664, 1019) << Kind::None;
        QTest::newRow("signature offset beyond everything")
            << PortableExecutable::header(0x8664, -1) << Kind::None;
        QTest::newRow("MZ without PE") << QByteArray("MZ") + QByteArray(1022, '\0') << Kind::None;
        QTest::newRow("MZ alone") << QByteArray("MZ") << Kind::None;
        QTest::newRow("ELF, 32-bit") << QByteArray("\x7f"
                                                   "ELF\x01\x01\x01")
                                     << Kind::Image32;
        QTest::newRow("ELF, 64-bit") << QByteArray("\x7f"
                                                   "ELF\x02\x01\x01")
                                     << Kind::Image64;
        QTest::newRow("ELF of no class") << QByteArray("\x7f"
                                                       "ELF\x07\x01\x01")
                                         << Kind::None;
        QTest::newRow("ELF that is cut") << QByteArray("\x7f"
                                                       "ELF")
                                         << Kind::None;
        QTest::newRow("a text") << QByteArray("#!/bin/sh\n") << Kind::None;
        QTest::newRow("nothing") << QByteArray() << Kind::None;
    }

    void theKindComesFromThePeMachineOrTheElfClass()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(ImageHeader::Kind, kind);
        QCOMPARE(ImageHeader::kindOf(bytes.constData(), std::size_t(bytes.size())), kind);
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(tst_ImageHeader)
#include "tst_imageheader.moc"
