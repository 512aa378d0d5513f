#include "tests/views/ViewFixture.h"

namespace TestSupport {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;

class FaultyModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isRightToLeft MEMBER isRightToLeft CONSTANT)
    Q_PROPERTY(QString word MEMBER word CONSTANT)

public:
    bool isRightToLeft = false;
    QString word;
};

class ViewCheck : public ViewTest {
protected:
    static std::vector<std::string> problems(const char* fault, bool isRightToLeft = false) {
        const auto model = std::make_shared<FaultyModel>();
        model->word = fault;
        model->isRightToLeft = isRightToLeft;
        return ShownView({"qrc:/tests/Faults.qml", model}, QSize(400, 200)).problems(isRightToLeft);
    }
};

TEST_F(ViewCheck, FindsNothingWhereAllIsWell) {
    EXPECT_THAT(problems("none"), IsEmpty());
    EXPECT_THAT(problems("mayElide"), IsEmpty());
}

TEST_F(ViewCheck, FindsEachFault) {
    const std::vector<std::pair<const char*, const char*>> faults{{"narrow", "larger than its place"},
                                                                  {"elided", "cut short"},
                                                                  {"overlapping", "covered by"},
                                                                  {"outside", "outside the window"},
                                                                  {"clipped", "clipped"},
                                                                  {"noFont", "without a font"},
                                                                  {"noName", "no name"},
                                                                  {"outOfControl", "outside its control"}};
    for (const auto& [fault, problem] : faults) {
        EXPECT_THAT(problems(fault), Contains(HasSubstr(problem))) << fault;
    }
}

TEST_F(ViewCheck, FindsWordsOnTheWrongSide) {
    EXPECT_THAT(problems("wrongSide", true), Contains(HasSubstr("on the wrong side")));
    EXPECT_THAT(problems("wrongSide"), IsEmpty());
}

} // namespace
} // namespace TestSupport

#include "ViewCheckTest.moc"
